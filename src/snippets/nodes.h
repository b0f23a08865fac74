#pragma once

#include <boost/variant.hpp>
#include <string>
#include <vector>

#include "regex/regexp.h"

/// The tree of format strings and of snippets. Placeholders and code are made for snippets alone.
namespace parser {

namespace case_change {
enum type { none = 0, upper_next = 1, lower_next = 2, upper = 3, lower = 4 };
}

namespace regexp_options {
enum type : unsigned { always = 1, g = 2, i = 4, e = 8, m = 16, s = 32 };
}

namespace variable_change {
enum type : unsigned { upcase = 1, downcase = 2, capitalize = 4, asciify = 8 };
}

struct text_t;
struct placeholder_t;
struct placeholder_transform_t;
struct placeholder_choice_t;
struct variable_t;
struct variable_transform_t;
struct variable_fallback_t;
struct variable_condition_t;
struct variable_change_t;
struct case_change_t;
struct code_t;

using node_t = boost::variant<
    boost::recursive_wrapper<text_t>, boost::recursive_wrapper<placeholder_t>,
    boost::recursive_wrapper<placeholder_transform_t>,
    boost::recursive_wrapper<placeholder_choice_t>, boost::recursive_wrapper<variable_t>,
    boost::recursive_wrapper<variable_transform_t>, boost::recursive_wrapper<variable_fallback_t>,
    boost::recursive_wrapper<variable_condition_t>, boost::recursive_wrapper<variable_change_t>,
    boost::recursive_wrapper<case_change_t>, boost::recursive_wrapper<code_t>>;
using nodes_t = std::vector<node_t>;

struct text_t {
  std::string text;
};
struct placeholder_t {
  std::size_t index;
  nodes_t content;
};
struct placeholder_transform_t {
  std::size_t index;
  regexp::pattern_t pattern;
  nodes_t format;
  unsigned options;  // of regexp_options
};
struct placeholder_choice_t {
  std::size_t index;
  std::vector<nodes_t> choices;
};
struct variable_t {
  std::string name;
};
struct variable_transform_t {
  std::string name;
  regexp::pattern_t pattern;
  nodes_t format;
  unsigned options;  // of regexp_options
};
struct variable_fallback_t {
  std::string name;
  nodes_t fallback;
};
struct variable_condition_t {
  std::string name;
  nodes_t if_set, if_not_set;
};
struct variable_change_t {
  std::string name;
  unsigned change;  // of variable_change
};
struct case_change_t {
  case_change::type type;
};
struct code_t {
  std::string code;
};

}  // namespace parser
