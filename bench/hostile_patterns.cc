#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/utf.h"
#include "regex/sliced_search.h"

// hostile_patterns [LENGTH]...: the longest slice of searches by patterns that are made to be slow,
// in lines of the lengths given (10 to 100,000 units otherwise). Each search is left after half a
// second. Prints one line a length, and each pattern with a slice of more than 50 ms.

namespace {

using namespace std::chrono;

/// Repetitions within repetitions, overlapping alternatives, scans that are quadratic, references
/// back, recursion and look-around: each core with each quantifier in each frame.
std::vector<std::string> patterns() {
  char const* const cores[] = {"a",       "(a|a)",    "(a|ab|b)", "(?:a+)",         "(a*)",
                               "(?>a|b)", "(?=a+)a",  "(?<=a)a",  "(?<n>a\\g<n>?)", "(a)\\1",
                               "[ab]",    "(?:\\w|a)"};
  char const* const repeats[] = {"+", "*", "+?", "*+", "{1,40}"};
  char const* const frames[] = {"%c",          "(?:%)+c", "^(?:%)*[cd]$", "%%%[cd]", "%(?=\\d)",
                                "(?m:.*%.*c)", "(?i:%)#", "(?<!c)%\\b!",  "(?!%c)%d"};
  std::vector<std::string> result;
  for (std::string const core : cores) {
    for (char const* repeat : repeats) {
      for (std::string const frame : frames) {
        std::string pattern;
        for (char c : frame) pattern += c == '%' ? core + repeat : std::string(1, c);
        result.push_back(pattern);
      }
    }
  }
  return result;
}

}  // namespace

int main(int argc, char* argv[]) {
  std::vector<std::size_t> lengths = {10, 1000, 100'000};
  if (argc > 1) lengths.clear();
  for (int i = 1; i < argc; ++i) lengths.push_back(std::strtoul(argv[i], nullptr, 10));
  for (std::size_t length : lengths) {
    std::u16string units;
    while (units.size() < length) units += units.size() % 50 == 49 ? u'b' : u'a';
    regex::valid_text const text(units);
    int count = 0, gave_up = 0, unfinished = 0, long_slices = 0;
    milliseconds longest{0};
    for (auto const& pattern : patterns()) try {
        std::u16string const source = unicode::to_utf16(pattern);
        oniguruma::ptrn_t const ptrn(source.data(), source.data() + source.size(), 0);
        oniguruma::sliced_search search(text, ptrn, 0, units.size());
        auto const start = steady_clock::now();
        milliseconds slice{0};
        auto state = oniguruma::search_state::more;
        while (state == oniguruma::search_state::more &&
               steady_clock::now() - start < milliseconds(500)) {
          auto const before = steady_clock::now();
          state = search.step();
          slice = std::max(slice, duration_cast<milliseconds>(steady_clock::now() - before));
        }
        ++count;
        gave_up += state == oniguruma::search_state::gave_up;
        unfinished += state == oniguruma::search_state::more;
        longest = std::max(longest, slice);
        if (slice <= milliseconds(50)) continue;
        ++long_slices;
        std::printf("  %5lld ms  %s\n", static_cast<long long>(slice.count()), pattern.c_str());
      } catch (std::exception const&) {
      }
    std::printf(
        "%zu units: %d patterns, longest slice %lld ms, %d beyond 50 ms, %d gave up, "
        "%d not at the end after 500 ms\n",
        length, count, static_cast<long long>(longest.count()), long_slices, gave_up, unfinished);
  }
}
