#include "actions/capitalize.h"

#include <algorithm>

#include "platform/unicode.h"

namespace actions {
namespace {

bool is_in_word(text::char_t unit) {
  return unicode::is_alpha(unit) || unit == u'\'' || unit == u'\u2019' || unit == u'-';
}

}  // namespace

std::u16string capitalized(text::unit_view text,
                           std::function<bool(std::u16string const&)> const& stays_lower) {
  std::u16string result(text);
  auto const end = std::find_if_not(result.rbegin(), result.rend(), unicode::is_space).base();
  bool is_first = true;
  for (auto at = result.begin(); at != result.end();) {
    if (!is_in_word(*at)) {
      ++at;
      continue;
    }
    auto const word_end = std::find_if_not(at, result.end(), is_in_word);
    std::transform(at, word_end, at, unicode::to_lower);
    bool const is_outer = is_first || word_end == end;
    if (is_outer || !stays_lower({at, word_end})) *at = unicode::to_upper(*at);
    is_first = false;
    at = word_end;
  }
  return result;
}

}  // namespace actions
