#include <iterator>
#include <memory>

#include "fuzz/fuzz.h"
#include "platform/user_defaults.h"
#include "regex/format.h"

// Bytes as pattern, text and format, one line each; the text in both directions and as bytes and as
// units. Whatever they are, a search comes to its end, and a match lies within the text.

namespace {

regex::limits const allowed{20'000, 10, 1 << 20};

template <class Iterator>
void check(regex::match<Iterator> const& m, Iterator first, Iterator last) {
  if (!m) return;
  if (m.text_begin() != first || m.text_end() != last || !m.is_set(0)) std::abort();
  auto const length = last - first;
  for (std::size_t n = 0; n < m.size(); ++n) {
    if (!m.is_set(n)) continue;
    auto const begin = m.begin(n) - first, end = m.end(n) - first;
    if (begin < 0 || end < begin || length < end) std::abort();
  }
}

template <class P, class Text>
void search(P const& pattern, Text const& text) {
  regex::nfa<typename P::value_type> const nfa(pattern.data(), pattern.data() + pattern.size());
  check(regex::find(text.begin(), text.end(), nfa, allowed), text.begin(), text.end());
  check(regex::find(text.rbegin(), text.rend(), nfa, allowed), text.rbegin(), text.rend());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static auto const former =
      platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""));
  std::string rest = input_text(data, size, 4096);
  std::string const pattern = take_until('\n', rest), format = take_until('\n', rest);
  std::u16string units;
  for (unsigned char c : rest) units += c < 128 ? c : static_cast<char16_t>(c * 257);

  search(pattern, rest);
  search(pattern, units);
  search(std::u16string(pattern.begin(), pattern.end()), units);

  using out_t = std::back_insert_iterator<std::u16string>;
  std::u16string out;
  regex::fmt_t<char, out_t> const parsed(format.data(), format.data() + format.size());
  regex::nfa<char> const nfa(pattern.data(), pattern.data() + pattern.size());
  regex::replace(units.begin(), units.end(), nfa, parsed, std::back_inserter(out), allowed);
  return 0;
}
