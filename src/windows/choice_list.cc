#include "windows/choice_list.h"

#include <algorithm>

#include "platform/unicode.h"
#include "platform/utf.h"
#include "projects/BriskStringRanker.h"

namespace windows {
namespace {

constexpr std::size_t most_ranked = 50'000;  // which take a few milliseconds

/// Whether the letters stand in a title in their order, as far as can be seen soon: a title with
/// other than ASCII characters may hold them in another form.
bool may_hold(std::string_view title, std::u16string const& letters) {
  std::size_t at = 0;
  for (char const c : title) {
    auto const unit = static_cast<unsigned char>(c);
    if (unit >= 0x80) return true;
    char16_t const lower = 'A' <= c && c <= 'Z' ? static_cast<char16_t>(c + 32) : unit;
    if (lower == letters[at] && ++at == letters.size()) return true;
  }
  return false;
}

}  // namespace

choice_list::choice_list(std::string title, entries all)
    : title_(std::move(title)), all_(std::move(all)) {}

void choice_list::set_filter(std::string const& text) {
  std::u16string const prepared = BriskStringRanker::prepareFilterString(unicode::to_utf16(text));
  // What doesn't hold some letters doesn't hold more of them either.
  bool const narrows = !is_all_ && prepared.starts_with(prepared_);
  prepared_ = prepared;
  is_all_ = prepared.empty();
  if (is_all_) return shown_.clear();
  auto const is_other = [&](std::size_t each) { return !may_hold(all_.title(each), prepared_); };
  if (narrows) {
    if (is_ranked_) std::sort(shown_.begin(), shown_.end());
    std::erase_if(shown_, is_other);
  } else {
    shown_.clear();
    for (std::size_t each = 0; each < all_.count; ++each)
      if (!is_other(each)) shown_.push_back(each);
  }
  is_ranked_ = shown_.size() <= most_ranked;
  if (is_ranked_) rank();
}

void choice_list::rank() {
  std::vector<std::pair<double, std::size_t>> ranked;
  projects::abbreviation wanted(prepared_);
  std::u16string searched;
  for (std::size_t const each : shown_) {
    searched.clear();
    projects::append_searched(all_.title(each), searched);
    auto const blanks = std::count(searched.begin(), searched.end(), u' ');
    double const score = wanted.score(searched, static_cast<std::size_t>(blanks));
    if (score > -0.5) ranked.emplace_back(score, each);
  }
  std::sort(ranked.begin(), ranked.end(), [](auto const& a, auto const& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  shown_.clear();
  for (auto const& [score, each] : ranked) shown_.push_back(each);
}

platform::picker_row choice_list::row(std::size_t index) const {
  std::size_t const each = entry(index);
  platform::picker_row result = all_.row(each);
  result.title = unicode::to_utf16(all_.title(each));
  if (!is_all_) result.matched = BriskStringRanker(result.title).maskForAbbreviation(prepared_);
  return result;
}

std::size_t choice_list::first_row() const {
  return is_all_ ? all_.current.value_or(0) : 0;
}

std::string choice_list::note() const {
  std::string const all = std::to_string(all_.count);
  if (all_.count == 0) return "There are none.";
  if (count() == 0) return "No matches.";
  if (is_all_) return all;
  std::string const order = is_ranked_ ? "" : "; more letters order them by how well they fit";
  return std::to_string(count()) + " of " + all + order;
}

choice_list::entries symbol_entries(std::vector<styles::symbol> const& symbols, std::size_t line) {
  auto const after =
      std::partition_point(symbols.begin(), symbols.end(),
                           [&](styles::symbol const& each) { return each.line <= line; });
  choice_list::entries result;
  result.count = symbols.size();
  result.title = [&symbols](std::size_t each) -> std::string_view { return symbols[each].name; };
  result.row = [&symbols](std::size_t each) {
    platform::picker_row row;
    row.detail = "line " + std::to_string(symbols[each].line);
    return row;
  };
  if (after != symbols.begin())
    result.current = static_cast<std::size_t>(after - symbols.begin()) - 1;
  return result;
}

choice_list::entries action_entries(std::vector<program_action> const& actions) {
  choice_list::entries result;
  result.count = actions.size();
  result.title = [&actions](std::size_t each) -> std::string_view { return actions[each].title; };
  result.row = [&actions](std::size_t each) {
    platform::picker_row row;
    row.detail = actions[each].checked ? "\u2713" : "";
    if (!actions[each].keys.empty()) row.keys = actions[each].keys.front();
    row.enabled = actions[each].enabled;
    return row;
  };
  for (std::size_t each = 0; each < actions.size() && !result.current; ++each)
    if (actions[each].checked) result.current = each;
  return result;
}

}  // namespace windows
