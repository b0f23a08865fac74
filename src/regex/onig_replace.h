#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "regex/replacement.h"

struct re_pattern_buffer;

/// Regular-expression substitutions within UTF-8 text, for snippets and lists of symbols, with the
/// replacement texts of regex/replacement.h. Main thread only.
namespace onig {

namespace option {
enum type : unsigned { none = 0, global = 1, extended = 2, multi_line = 4, ignore_case = 8 };

inline type& operator|=(type& a, type b) {
  return a = static_cast<type>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}
}  // namespace option

/// A compiled pattern. What is wrong with one is put into `fault`, or without that told on standard
/// error, and it replaces nothing.
class ptrn_t {
 public:
  ptrn_t(char const* first, char const* last, option::type options, std::string* fault = nullptr);
  ~ptrn_t();
  ptrn_t(ptrn_t const&) = delete;
  ptrn_t& operator=(ptrn_t const&) = delete;

  /// Null when it did not compile.
  re_pattern_buffer* regex() const { return regex_; }

 private:
  re_pattern_buffer* regex_ = nullptr;
};

/// The text with its first match replaced, or each with option `global`. Each line feed of the
/// replacement is followed by `indent`, a string that ends with a zero. Empty with a pattern that
/// did not compile, and where `with` is null; with a pattern that takes too long the text as it is,
/// and `gave_up` is set.
std::string replaced(std::string_view text, regex::replacement const* with, ptrn_t const& ptrn,
                     option::type options, char const* indent, bool& gave_up);

/// As regex::parse_replacement; one with a syntax error is reported on standard error.
std::unique_ptr<regex::replacement const> parsed_replacement(std::string_view format);

/// Writes what replaced() makes of the text; a format that cannot be parsed, and so replaces
/// nothing, is reported on standard error.
template <class Out>
Out replace(char const* first, char const* last, char const* format_first, char const* format_last,
            ptrn_t const& ptrn, option::type options, char const* indent,
            std::size_t /*indent_length*/, Out out) {
  auto const with = parsed_replacement({format_first, format_last});
  bool gave_up = false;
  std::string const result = replaced({first, last}, with.get(), ptrn, options, indent, gave_up);
  return std::copy(result.begin(), result.end(), out);
}

}  // namespace onig

namespace snippet {

/// "g" global, "m" multi-line, "i" ignores case, "e" extended; other letters mean nothing.
onig::option::type options_from_string(std::string_view letters);

}  // namespace snippet
