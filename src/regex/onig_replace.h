#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

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

namespace detail {
std::string replaced(std::string_view text, std::string_view format, ptrn_t const& ptrn,
                     option::type options, char const* indent);
}

/// Writes the text with its first match replaced, or each with option `global`. Each line feed of
/// the format is followed by `indent`, a string that ends with a zero. With a pattern that did not
/// compile, or a format that cannot be parsed, which is reported on standard output, nothing is
/// written.
template <class Out>
Out replace(char const* first, char const* last, char const* format_first, char const* format_last,
            ptrn_t const& ptrn, option::type options, char const* indent,
            std::size_t /*indent_length*/, Out out) {
  std::string const result =
      detail::replaced(std::string_view(first, last), std::string_view(format_first, format_last),
                       ptrn, options, indent);
  return std::copy(result.begin(), result.end(), out);
}

}  // namespace onig

namespace snippet {

/// "g" global, "m" multi-line, "i" ignores case, "e" extended; other letters mean nothing.
onig::option::type options_from_string(std::string_view letters);

}  // namespace snippet
