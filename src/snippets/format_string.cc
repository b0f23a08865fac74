#include "snippets/format_string.h"

#include "snippets/expand_visitor.h"
#include "snippets/parse_context.h"

namespace format_string {

void format_string_t::init(std::string const& text) {
  *this = format_string_t(parser::parse_format_string(text));
}

std::string format_string_t::expand(variables_t const& variables) const {
  snippet::expand_visitor visitor(variables);
  visitor.traverse(nodes());
  visitor.handle_case_changes();
  return visitor.result;
}

std::string replace(std::string const& source, regexp::pattern_t const& pattern,
                    format_string_t const& format, bool repeat, variables_t const& variables) {
  snippet::expand_visitor visitor(variables);
  visitor.replace(source, pattern, format.nodes(), repeat);
  visitor.handle_case_changes();
  return visitor.result;
}

}  // namespace format_string
