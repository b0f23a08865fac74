#pragma once

#include <map>
#include <memory>
#include <string>

#include "snippets/nodes.h"

/// Format strings: the replacement of a substitution, and the text of a snippet's mirrors.
///
///     $name ${name} $1                 the value, or nothing
///     ${name:-text} ${name:text}       the text when there is no such variable
///     ${name:+text} ${name:?a:b}       by whether there is one; (?1:a:b) as well
///     ${name/pattern/format/gimes}     the value with a substitution of its own
///     ${name:/upcase/asciify}          the value changed; downcase and capitalize as well
///     \U \L \E \u \l \n \t \r          case from here on, of the next character; control codes
///
/// What does not parse is text.
namespace format_string {

using variables_t = std::map<std::string, std::string>;

/// A parsed format string, shared and unchanging.
class format_string_t {
 public:
  format_string_t() : format_string_t(parser::nodes_t()) {}
  format_string_t(std::string const& text) { init(text); }
  format_string_t(char const* text) { init(text); }
  format_string_t(parser::nodes_t nodes)
      : nodes_(std::make_shared<parser::nodes_t const>(std::move(nodes))) {}

  void init(std::string const& text);
  parser::nodes_t const& nodes() const { return *nodes_; }
  std::string expand(variables_t const& variables) const;

 private:
  std::shared_ptr<parser::nodes_t const> nodes_;
};

/// The text with its first match replaced, or with each. A pattern that matches nothing leaves the
/// text as it is. Texts are UTF-8.
std::string replace(std::string const& source, regexp::pattern_t const& pattern,
                    format_string_t const& format, bool repeat, variables_t const& variables);

}  // namespace format_string
