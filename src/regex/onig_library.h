#pragma once

#include <oniguruma.h>

#include <string>
#include <string_view>

/// What the wrappers of Oniguruma share. Any thread.
namespace regex::onig_library {

/// What one attempt to match may spend. Going back in an attempt costs 10 to 80 ns; an entry on the
/// stack has 40 bytes, and a greedy ".*" makes one a character.
inline constexpr unsigned long retries_per_match = 1'000'000;
inline constexpr unsigned stack_entries = 4'000'000;
/// Calls of groups by patterns such as "(?<n>a\g<n>?)", per search and nested.
inline constexpr unsigned long calls_per_search = 1'000'000;
inline constexpr int nested_calls = 100;

/// Initialises the library and sets the limits; to be called before compiling. Once a process.
void initialize();

/// As onig_new, but throws std::bad_alloc for want of memory, which the library doesn't survive
/// everywhere.
int new_regex(regex_t** regex, OnigUChar const* first, OnigUChar const* last,
              OnigOptionType options, OnigEncoding encoding, OnigSyntaxType* syntax,
              OnigErrorInfo* info);

/// Whether the result of a search says that it was broken off by one of the limits, or by another
/// fault such as want of memory, so that there may be a match.
bool gave_up(int result);

/// Oniguruma's words for a failed compilation.
std::string message(int error, OnigErrorInfo const& info);

/// Told of the attempts of a search by a pattern that was compiled with `new_observed`.
class attempt_observer {
 public:
  /// False ends the search. A pattern that calls itself reports an attempt several times.
  virtual bool before_attempt(OnigUChar const* start) = 0;

 protected:
  ~attempt_observer() = default;
};

/// Compiles a pattern, which must be one that compiles by itself, so that its attempts are
/// reported. Null if that cannot be.
regex_t* new_observed(std::u16string_view pattern, unsigned options);

/// As onig_search forward up to the end, but gives up when all of its attempts together have gone
/// back so often.
int search_within(unsigned long retries, regex_t* regex, OnigUChar const* text,
                  OnigUChar const* end, OnigUChar const* start, OnigRegion* region,
                  OnigOptionType options);

/// As onig_search; `retries` as in sliced_search.
int search_observed(regex_t* regex, OnigUChar const* text, OnigUChar const* end,
                    OnigUChar const* start, OnigUChar const* range, OnigRegion* region,
                    attempt_observer& observer, unsigned long retries,
                    OnigOptionType options = ONIG_OPTION_NONE);

/// As onig_search up to `end`; `retries` limits all attempts together.
int search_briefly(regex_t* regex, OnigUChar const* text, OnigUChar const* end,
                   OnigUChar const* start, OnigRegion* region, unsigned long retries);

inline OnigUChar const* bytes(char16_t const* units) {
  return reinterpret_cast<OnigUChar const*>(units);
}
inline OnigUChar const* bytes(char const* utf8) {
  return reinterpret_cast<OnigUChar const*>(utf8);
}

/// The longest text of which the library can tell offsets, in bytes.
inline constexpr std::size_t max_bytes = 0x7fff'fffe;

}  // namespace regex::onig_library
