#pragma once

#include <vector>

#include "snippets/nodes.h"
#include "snippets/parser_base.h"

namespace parser {

/// The grammar of format strings, by recursive descent. Whatever does not parse is text.
///
/// A construct that fails is read again as text, and so would be all that is nested in it, twice a
/// level: what has failed at a place is remembered, nesting is limited, and so is the total work.
class parse_context_t : public parser_base_t {
 public:
  explicit parse_context_t(std::string_view text) : parser_base_t(text), failed_(text.size()) {}

  /// Up to one of the stops, which must come and is taken; without stops up to the end.
  bool parse_format_string(std::string_view stops, nodes_t& nodes);

 protected:
  bool parse_variable(nodes_t& nodes);
  bool parse_condition(nodes_t& nodes);
  bool parse_control_code(nodes_t& nodes);
  bool parse_case_change(nodes_t& nodes);
  bool parse_escape(std::string_view escapable, nodes_t& nodes);
  bool parse_text(nodes_t& nodes);
  bool parse_regexp_options(unsigned& options);

 private:
  bool parse_braced_variable(nodes_t& nodes);
  bool parse_transform(std::string name, nodes_t& nodes);
  bool parse_modifier(std::string name, nodes_t& nodes);
  bool parse_change(std::string name, nodes_t& nodes);
  bool parse_condition_parts(nodes_t& nodes);
  /// Calls a function of the above, and puts the cursor back when it fails.
  bool attempt(bool (parse_context_t::*parse)(nodes_t&), nodes_t& nodes);

  std::vector<bool> failed_;  // a construct that begins here, by offset
  int depth_ = 0;
};

/// The format string as a list of nodes. Any thread.
nodes_t parse_format_string(std::string_view text);

}  // namespace parser
