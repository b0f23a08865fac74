#include "snippets/parse_context.h"

#include <utility>

namespace parser {
namespace {

constexpr int max_depth = 200;

constexpr std::string_view name_characters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_abcdefghijklmnopqrstuvwxyz";

void append_text(nodes_t& nodes, char c) {
  text_t* const last = nodes.empty() ? nullptr : boost::get<text_t>(&nodes.back());
  if (last) {
    last->text += c;
  } else {
    nodes.push_back(text_t{std::string(1, c)});
  }
}

/// What Oniguruma is to be told of the options of a transformation.
unsigned compile_options(unsigned options) {
  constexpr std::pair<unsigned, unsigned> bits[] = {{regexp_options::i, 1},
                                                    {regexp_options::e, 2},
                                                    {regexp_options::m, 4},
                                                    {regexp_options::s, 8}};
  unsigned result = 0;
  for (auto const& [ours, theirs] : bits) result |= options & ours ? theirs : 0;
  return result;
}

}  // namespace

bool parse_context_t::parse_format_string(std::string_view stops, nodes_t& nodes) {
  char const* const start = it_;
  std::string const escapable = "\\$(" + std::string(stops);
  nodes_t result;
  while (!at_end() && !is_at(stops)) {
    if (!stops.empty() && !spend_step()) break;
    attempt(&parse_context_t::parse_variable, result) ||
        attempt(&parse_context_t::parse_condition, result) || parse_control_code(result) ||
        parse_case_change(result) || parse_escape(escapable, result) || parse_text(result);
  }
  if (!stops.empty() && !parse_char(stops)) {
    it_ = start;
    return false;
  }
  nodes = std::move(result);
  return true;
}

bool parse_context_t::attempt(bool (parse_context_t::*parse)(nodes_t&), nodes_t& nodes) {
  if (!is_at("$(")) return false;
  char const* const start = it_;
  if (failed_[offset()] || depth_ >= max_depth) return false;
  // At this place only one of the two can be.
  bool const mine = is_at("$") == (parse == &parse_context_t::parse_variable);
  if (!mine) return false;
  ++depth_;
  bool const parsed = (this->*parse)(nodes);
  --depth_;
  if (!parsed) {
    it_ = start;
    failed_[offset()] = true;
  }
  return parsed;
}

bool parse_context_t::parse_variable(nodes_t& nodes) {
  if (!parse_char("$")) return false;
  if (parse_char("{")) return parse_braced_variable(nodes);
  std::string name;
  if (!parse_int(name) && !parse_chars(name_characters, name)) return false;
  nodes.push_back(variable_t{name});
  return true;
}

bool parse_context_t::parse_braced_variable(nodes_t& nodes) {
  std::string name;
  if (!parse_until("/:}", name)) return false;
  switch (last_taken()) {
    case '/':
      return parse_transform(std::move(name), nodes);
    case ':':
      return parse_modifier(std::move(name), nodes);
    default:
      nodes.push_back(variable_t{std::move(name)});
      return true;
  }
}

bool parse_context_t::parse_transform(std::string name, nodes_t& nodes) {
  std::string pattern;
  nodes_t format;
  unsigned options = 0;
  if (!parse_until("/", pattern) || !parse_format_string("/", format) ||
      !parse_regexp_options(options) || !parse_char("}")) {
    return false;
  }
  nodes.push_back(variable_transform_t{std::move(name),
                                       regexp::pattern_t(pattern, compile_options(options)),
                                       std::move(format), options});
  return true;
}

bool parse_context_t::parse_modifier(std::string name, nodes_t& nodes) {
  if (parse_char("/")) return parse_change(std::move(name), nodes);
  nodes_t first, second;
  if (parse_char("+")) {
    if (!parse_format_string("}", first)) return false;
    nodes.push_back(variable_condition_t{std::move(name), std::move(first), {}});
  } else if (parse_char("?")) {
    if (!parse_format_string(":", first) || !parse_format_string("}", second)) return false;
    nodes.push_back(variable_condition_t{std::move(name), std::move(first), std::move(second)});
  } else {
    parse_char("-");
    if (!parse_format_string("}", first)) return false;
    nodes.push_back(variable_fallback_t{std::move(name), std::move(first)});
  }
  return true;
}

bool parse_context_t::parse_change(std::string name, nodes_t& nodes) {
  constexpr std::pair<std::string_view, unsigned> words[] = {
      {"upcase", variable_change::upcase},
      {"downcase", variable_change::downcase},
      {"capitalize", variable_change::capitalize},
      {"asciify", variable_change::asciify}};
  unsigned change = 0;
  do {
    std::string word;
    if (!parse_until("/}", word)) return false;
    for (auto const& [text, bit] : words) change |= word == text ? bit : 0;
  } while (last_taken() == '/');
  nodes.push_back(variable_change_t{std::move(name), change});
  return true;
}

bool parse_context_t::parse_condition(nodes_t& nodes) {
  return parse_char("(") && parse_char("?") && parse_condition_parts(nodes);
}

bool parse_context_t::parse_condition_parts(nodes_t& nodes) {
  std::string name;
  nodes_t if_set, if_not_set;
  if (!parse_int(name) || !parse_char(":") || !parse_format_string(":)", if_set)) return false;
  if (last_taken() == ':' && !parse_format_string(")", if_not_set)) return false;
  nodes.push_back(variable_condition_t{name, std::move(if_set), std::move(if_not_set)});
  return true;
}

bool parse_context_t::parse_control_code(nodes_t& nodes) {
  if (last_ - it_ < 2 || *it_ != '\\') return false;
  auto const code = std::string_view("trn").find(it_[1]);
  if (code == std::string_view::npos) return false;
  append_text(nodes, "\t\r\n"[code]);
  it_ += 2;
  return true;
}

bool parse_context_t::parse_case_change(nodes_t& nodes) {
  constexpr case_change::type types[] = {case_change::upper, case_change::lower, case_change::none,
                                         case_change::upper_next, case_change::lower_next};
  if (last_ - it_ < 2 || *it_ != '\\') return false;
  auto const code = std::string_view("ULEul").find(it_[1]);
  if (code == std::string_view::npos) return false;
  nodes.push_back(case_change_t{types[code]});
  it_ += 2;
  return true;
}

bool parse_context_t::parse_escape(std::string_view escapable, nodes_t& nodes) {
  if (last_ - it_ < 2 || *it_ != '\\' || escapable.find(it_[1]) == std::string_view::npos) {
    return false;
  }
  append_text(nodes, it_[1]);
  it_ += 2;
  return true;
}

bool parse_context_t::parse_text(nodes_t& nodes) {
  append_text(nodes, *it_++);
  return true;
}

bool parse_context_t::parse_regexp_options(unsigned& options) {
  constexpr std::string_view letters = "giems";
  options = regexp_options::always;
  while (is_at(letters)) options |= 2U << letters.find(*it_++);
  return true;
}

nodes_t parse_format_string(std::string_view text) {
  nodes_t nodes;
  parse_context_t(text).parse_format_string("", nodes);
  return nodes;
}

}  // namespace parser
