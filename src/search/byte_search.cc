#include "search/byte_search.h"

#include <cstring>

namespace search {
namespace {

// Of program text and prose, the most frequent first; all others are rare.
constexpr std::string_view frequent = " etaoinsrlcdupmhfg_bxy,w.()v;k*-=1/TE\"0S2A:C>I";

std::size_t rarity(char c) {
  std::size_t const at = frequent.find(c);
  return at == frequent.npos ? frequent.size() : at;
}

char lower_case(char c) {
  return 'A' <= c && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool is_letter(char16_t c) {
  return (u'a' <= c && c <= u'z') || (u'A' <= c && c <= u'Z');
}

bool is_digit(char16_t c) {
  return u'0' <= c && c <= u'9';
}

}  // namespace

byte_search::byte_search(std::string sought, bool ignore_case)
    : sought_(std::move(sought)), ignore_case_(ignore_case) {
  if (ignore_case)
    for (char& c : sought_) c = lower_case(c);
  std::size_t best = 0, next = sought_.size() > 1 ? 1 : 0;
  if (rarity(sought_[next]) > rarity(sought_[best])) std::swap(best, next);
  for (std::size_t n = 2; n < sought_.size(); ++n) {
    if (rarity(sought_[n]) > rarity(sought_[best])) {
      next = best;
      best = n;
    } else if (rarity(sought_[n]) > rarity(sought_[next])) {
      next = n;
    }
  }
  rare_ = probe_at(best);
  second_ = probe_at(next);
}

byte_search::probe byte_search::probe_at(std::size_t offset) const {
  char const c = sought_[offset];
  bool const has_two = ignore_case_ && 'a' <= c && c <= 'z';
  return {offset, c, has_two ? static_cast<char>(c - 'a' + 'A') : c};
}

bool byte_search::stands_at(char const* at) const {
  if (!ignore_case_) return std::memcmp(at, sought_.data(), sought_.size()) == 0;
  for (std::size_t n = 0; n < sought_.size(); ++n)
    if (lower_case(at[n]) != sought_[n]) return false;
  return true;
}

char const* byte_search::find(char const* first, char const* last) const {
  constexpr int block = 64;  // which compilers make into a few vectors
  if (last - first < static_cast<std::ptrdiff_t>(size())) return last;
  char const* const stop = last - size() + 1;
  auto const [a_at, a1, a2] = rare_;
  auto const [b_at, b1, b2] = second_;
  while (first < stop) {
    char const *const a = first + a_at, *const b = first + b_at;
    if (stop - first >= block) {
      unsigned char any = 0;
      for (int n = 0; n < block; ++n)
        any = static_cast<unsigned char>(
            any | (((a[n] == a1) | (a[n] == a2)) & ((b[n] == b1) | (b[n] == b2))));
      if (any == 0) {
        first += block;
        continue;
      }
    }
    char const* const end = stop - first >= block ? first + block : stop;
    for (; first < end; ++first) {
      char const x = first[a_at], y = first[b_at];
      if ((x == a1 || x == a2) && (y == b1 || y == b2) && stands_at(first)) return first;
    }
  }
  return last;
}

std::string required_text(std::u16string_view pattern) {
  std::string best, run;
  auto const end_run = [&] {
    if (run.size() > best.size()) best = run;
    run.clear();
  };
  // What is repeated or left out isn't part of the run; what comes once or more ends it.
  auto const drop_last = [&] {
    if (!run.empty()) run.pop_back();
    end_run();
  };
  int depth = 0;  // in groups nothing is taken
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    char16_t const c = pattern[i];
    char16_t const next = i + 1 < pattern.size() ? pattern[i + 1] : u'\0';
    if (c == u'\\') {
      ++i;
      if (next == u'\0' || next == u'Q') return "";
      bool const is_plain = next < 0x80 && next > u' ' && !is_letter(next) && !is_digit(next);
      if (is_plain && depth == 0)
        run += static_cast<char>(next);
      else
        end_run();
      // "\x{41}", "\k<name>": the rest must not be taken for text.
      if (is_letter(next) && i + 1 < pattern.size() &&
          std::u16string_view(u"xupPkgcCM").find(next) != std::u16string_view::npos)
        return "";
    } else if (c == u'[') {
      end_run();
      // A set may hold others; the bracket that comes first is a plain one.
      int sets = 0;
      std::size_t first = i + 1;
      for (; i < pattern.size(); ++i) {
        if (pattern[i] == u'\\') {
          ++i;
        } else if (pattern[i] == u'[') {
          ++sets;
          first = i + 1;
          if (first < pattern.size() && pattern[first] == u'^') ++first;
        } else if (pattern[i] == u']' && i != first && --sets == 0) {
          break;
        }
      }
    } else if (c == u'(') {
      end_run();
      if (next == u'*') return "";
      if (next == u'?') {
        char16_t const what = i + 2 < pattern.size() ? pattern[i + 2] : u'\0';
        if (std::u16string_view(u":=!><").find(what) == std::u16string_view::npos) return "";
      }
      ++depth;
    } else if (c == u')') {
      end_run();
      if (--depth < 0) return "";
    } else if (c == u'|' && depth == 0) {
      return "";
    } else if (c == u'*' || c == u'?' || c == u'{' ||
               (c == u'+' && std::u16string_view(u"*?+{").find(next) != pattern.npos)) {
      drop_last();
      if (c == u'{')
        while (i + 1 < pattern.size() &&
               (is_digit(pattern[i + 1]) || pattern[i + 1] == u',' || pattern[i + 1] == u'}')) {
          ++i;
          if (pattern[i] == u'}') break;
        }
    } else if (c == u'.' || c == u'^' || c == u'$' || c == u'+' || c < u' ' || c >= 0x7F ||
               depth != 0) {
      end_run();
    } else {
      run += static_cast<char>(c);
    }
  }
  end_run();
  return best;
}

}  // namespace search
