#include <stdexcept>

#include "fuzz/fuzz.h"
#include "platform/utf.h"
#include "regex/onig_replace.h"
#include "regex/regexp.h"
#include "regex/sliced_search.h"

// A line of pattern, then text: for all families a search comes to its end and a match lies within
// the text, and slices find what one search finds.

static void search_units(std::u16string const& pattern, std::u16string const& units) try {
  oniguruma::ptrn_t const ptrn(pattern.data(), pattern.data() + pattern.size(), 0);
  auto const size = static_cast<std::ptrdiff_t>(units.size());
  auto const m = oniguruma::find(units.data(), 0, size, &ptrn);
  for (std::size_t i = 0; i < m.size(); ++i) {
    if (m.is_set(i) && (m.end(i) < 0 || m.end(i) > size || m.begin(i) > size)) std::abort();
  }
  regex::valid_text const text(units);
  for (auto where : {oniguruma::direction::forward, oniguruma::direction::backward}) {
    oniguruma::sliced_search search(text, ptrn, 0, units.size(), where);
    oniguruma::search_state state;
    while ((state = search.step()) == oniguruma::search_state::more) continue;
    if (m.gave_up() || state == oniguruma::search_state::gave_up) continue;
    bool const found = state == oniguruma::search_state::found;
    // A search that goes backward may begin where \G holds and a forward one does not.
    if (ptrn.ticking_regex() && found != static_cast<bool>(m)) std::abort();
    bool const forward = where == oniguruma::direction::forward;
    if (found && forward && search.match().begin(0) != m.begin(0)) std::abort();
  }
} catch (std::invalid_argument const&) {
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string text = input_text(data, size, 512);
  std::string const pattern = take_until('\n', text);

  search_units(unicode::to_utf16(pattern), unicode::to_utf16(text));
  std::u16string odd;  // lone surrogates among it
  for (unsigned char c : text) odd += c < 128 ? char16_t(c) : char16_t(0xd700 + 16 * (c - 128));
  search_units(unicode::to_utf16(pattern), odd);

  auto const m = regexp::search(regexp::pattern_t(pattern), text.data(), text.data() + text.size());
  if (m && (m.end() > text.size() || m.begin() > text.size())) std::abort();
  onig::ptrn_t const narrow(pattern.data(), pattern.data() + pattern.size(), onig::option::none);
  std::string out;
  char const format[] = "<$0>";
  onig::replace(text.data(), text.data() + text.size(), format, format + 4, narrow,
                onig::option::global, "", 0, std::back_inserter(out));
  return 0;
}
