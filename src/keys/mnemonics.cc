#include "keys/mnemonics.h"

#include <array>
#include <optional>
#include <set>

namespace keys {
namespace {

constexpr std::size_t none = std::string::npos;

bool is_letter(char c) {
  return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z') || ('0' <= c && c <= '9');
}

unsigned char lower(char c) {
  return static_cast<unsigned char>('A' <= c && c <= 'Z' ? c + ('a' - 'A') : c);
}

// The places that may be underlined, best first.
std::vector<std::size_t> candidates(mnemonic_title const& of) {
  std::vector<std::size_t> wanted, starts, others;
  for (std::size_t i = 0; i < of.title.size(); ++i) {
    if (!is_letter(of.title[i])) continue;
    bool const is_wanted = !of.wanted.empty() && lower(of.title[i]) == lower(of.wanted[0]);
    bool const starts_word = i == 0 || of.title[i - 1] == ' ';
    (is_wanted && wanted.empty() ? wanted : starts_word ? starts : others).push_back(i);
  }
  if (!wanted.empty()) return wanted;
  starts.insert(starts.end(), others.begin(), others.end());
  return starts;
}

/// Titles and letters as the two sides of a graph, matched by augmenting paths.
class matching {
 public:
  explicit matching(std::vector<mnemonic_title> const& titles) : titles_(titles) {
    for (mnemonic_title const& title : titles) candidates_.push_back(candidates(title));
  }

  std::vector<std::size_t> solve() {
    places_.assign(titles_.size(), none);
    for (bool const wanted : {true, false})
      for (std::size_t n = 0; n < titles_.size(); ++n)
        if (titles_[n].wanted.empty() != wanted && places_[n] == none) match(n);
    return places_;
  }

 private:
  std::optional<std::size_t>& owner(std::size_t title, std::size_t place) {
    return owners_[lower(titles_[title].title[place])];
  }
  void give(std::size_t title, std::size_t place) {
    owner(title, place) = title;
    places_[title] = place;
  }

  void match(std::size_t title) {
    if (take_free(title)) return;
    std::set<unsigned char> tried;
    displace(title, tried);
  }
  bool take_free(std::size_t title) {
    for (std::size_t const place : candidates_[title])
      if (!owner(title, place)) return give(title, place), true;
    return false;
  }
  // Others take another letter of theirs.
  bool displace(std::size_t title, std::set<unsigned char>& tried) {
    for (std::size_t const place : candidates_[title]) {
      if (!tried.insert(lower(titles_[title].title[place])).second) continue;
      auto const holder = owner(title, place);
      if (holder && !take_free(*holder) && !displace(*holder, tried)) continue;
      give(title, place);
      return true;
    }
    return false;
  }

  std::vector<mnemonic_title> const& titles_;
  std::vector<std::vector<std::size_t>> candidates_;
  std::vector<std::size_t> places_;
  std::array<std::optional<std::size_t>, 256> owners_;
};

}  // namespace

std::vector<std::size_t> mnemonic_places(std::vector<mnemonic_title> const& titles) {
  return matching(titles).solve();
}

}  // namespace keys
