#include "regex/parser.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "regex/parse.h"

namespace regex {

using namespace parse_tree;

void node_list::push_back(node* n) {
  n->prev = tail;
  n->next = nullptr;
  (tail ? tail->next : head) = n;
  tail = n;
  depth = std::max(depth, n->depth);
}

node* node_list::pop_back() {
  node* const n = tail;
  tail = n->prev;
  (tail ? tail->next : head) = nullptr;
  n->prev = nullptr;
  return n;
}

namespace {

template <class T>
bool is_unit(T c, char wanted) {
  return to_unit(c) == to_unit(wanted);
}

/// The class that a letter after a backslash names; a capital is the same class, negated.
std::optional<class_data> class_of_letter(unit_t u) {
  switch (u | 0x20) {
    case u'w':
      return class_data{unit_class::word, u == u'W'};
    case u'd':
      return class_data{unit_class::digit, u == u'D'};
    case u's':
      return class_data{unit_class::space, u == u'S'};
    case u'u':
      return class_data{unit_class::upper, u == u'U'};
    case u'l':
      return class_data{unit_class::lower, u == u'L'};
  }
  return std::nullopt;
}

std::optional<anchor> anchor_of_letter(unit_t u) {
  switch (u) {
    case u'A':
      return anchor::text_start;
    case u'z':
      return anchor::text_end;
    case u'<':
      return anchor::word_start;
    case u'>':
      return anchor::word_end;
    case u'b':
      return anchor::word_boundary;
    case u'B':
      return anchor::not_word_boundary;
  }
  return std::nullopt;
}

std::optional<unit_class> class_of_name(std::string_view name) {
  static constexpr std::pair<std::string_view, unit_class> names[] = {
      {"alnum", unit_class::alnum}, {"alpha", unit_class::alpha}, {"blank", unit_class::blank},
      {"digit", unit_class::digit}, {"lower", unit_class::lower}, {"space", unit_class::space},
      {"upper", unit_class::upper}, {"word", unit_class::word},   {"xdigit", unit_class::xdigit}};
  for (auto const& [known, code] : names) {
    if (known == name) return code;
  }
  return std::nullopt;
}

/// What stands after the "(" of a group that doesn't capture; the longer heads come first.
constexpr std::pair<std::string_view, group_type> heads[] = {
    {"?=", group_type::look_ahead},          {"?<=", group_type::look_behind},
    {"?!", group_type::negative_look_ahead}, {"?<!", group_type::negative_look_behind},
    {"?>", group_type::no_backtrack},        {"?(", group_type::condition},
    {"?R", group_type::recursion},           {"?", group_type::options}};

}  // namespace

template <class T>
template <class Data>
void parser<T>::append(Data data, unsigned depth) {
  nodes_.push_back(std::make_unique<template_node<Data>>(std::move(data)));
  nodes_.back()->depth = depth;
  list_.push_back(nodes_.back().get());
}

template <class T>
typename parser<T>::method parser<T>::method_for(T c) {
  static constexpr std::pair<char, method> methods[] = {
      {'?', &parser::parse_repeat},  {'*', &parser::parse_repeat}, {'+', &parser::parse_repeat},
      {'{', &parser::parse_repeat},  {'(', &parser::parse_group},  {'|', &parser::parse_or},
      {'\\', &parser::parse_escape}, {'[', &parser::parse_class},  {'.', &parser::parse_any},
      {'^', &parser::parse_bol},     {'$', &parser::parse_eol}};
  for (auto const& [character, m] : methods) {
    if (is_unit(c, character)) return m;
  }
  return nullptr;
}

template <class T>
typename parser<T>::iterator parser<T>::parse(iterator first, iterator last, char stop) {
  std::size_t const outer_alternatives = alternatives_.size();
  while (first != last && (stop == 0 || !is_unit(*first, stop))) {
    if (method const m = method_for(*first)) {
      first = (this->*m)(first, last);
    } else {
      append(literal_data{to_unit(*first++)});
    }
  }
  fold_alternatives(outer_alternatives);
  return first;
}

template <class T>
void parser<T>::fold_alternatives(std::size_t count) {
  while (alternatives_.size() > count) {
    node_list const right = std::exchange(list_, {});
    node_list const left = alternatives_.back();
    alternatives_.pop_back();
    append(or_data{left, right}, std::max(left.depth, right.depth));
  }
}

template <class T>
typename parser<T>::iterator parser<T>::parse_or(iterator first, iterator) {
  alternatives_.push_back(std::exchange(list_, {}));
  return ++first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_any(iterator first, iterator) {
  append(class_data{unit_class::any, false});
  return ++first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_bol(iterator first, iterator) {
  append(anchor_data{anchor::line_start});
  return ++first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_eol(iterator first, iterator) {
  append(anchor_data{anchor::line_end});
  return ++first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_repeat(iterator first, iterator last) {
  repeat_data repeat{is_unit(*first, '+') ? 1u : 0u, is_unit(*first, '?') ? 1 : -1, true, nullptr};
  bool const has_bounds = is_unit(*first++, '{');
  if (has_bounds) first = parse_bounds(first, last, repeat);
  if (begins_with(first, last, "?")) {
    repeat.greedy = false;
    ++first;
  }
  if (list_.empty()) {
    report("parse error, no previous node to pop");
  } else if (list_.tail->depth >= max_nesting) {
    report("too many repeats of repeats");
    return first;
  } else {
    repeat.content = list_.pop_back();
  }
  append(repeat, repeat.content ? repeat.content->depth + 1 : 0);
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_bounds(iterator first, iterator last,
                                                     repeat_data& bounds) {
  bounds.min = 0;
  first = parse_number(first, last, bounds.min);
  bounds.max = static_cast<int>(bounds.min);
  if (begins_with(first, last, ",")) {
    unsigned max = static_cast<unsigned>(-1);
    first = parse_number(++first, last, max);
    bounds.max = static_cast<int>(max);
  }
  return parse_char(first, last, '}');
}

template <class T>
typename parser<T>::iterator parser<T>::parse_group(iterator first, iterator last) {
  if (nesting_ == max_nesting) {
    report("too many groups in each other");
    append(literal_data{to_unit(*first++)});
    return first;
  }
  ++first;
  group_data group{group_type::capture, 0, 0, {}};
  for (auto const& [text, type] : heads) {
    if (!begins_with(first, last, text)) continue;
    group.type = type;
    first += text.size();
    break;
  }
  if (group.type == group_type::condition) return parse_condition(first, last);
  if (group.type == group_type::options) first = parse_options(first, last, group);
  if (group.type == group_type::capture) {
    group.number = static_cast<unsigned>(++capture_count_);
    if (group.number == max_groups) report("too many groups, the further ones capture nothing");
  }
  first = parse_content(first, last, ')', group.content);
  append(group, group.content.depth + 1);
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_options(iterator first, iterator last,
                                                      group_data& group) {
  static constexpr std::string_view letters = "ismx";
  unsigned shift = 0;
  for (; first != last; ++first) {
    unit_t const u = to_unit(*first);
    auto const bit = u < 128 ? letters.find(static_cast<char>(u)) : letters.npos;
    if (u == u'-') {
      shift = clear_shift;
    } else if (bit == letters.npos) {
      break;
    } else {
      group.options |= 1u << (bit + shift);
    }
  }
  return parse_char(first, last, ':');
}

template <class T>
typename parser<T>::iterator parser<T>::parse_condition(iterator first, iterator last) {
  condition_data condition{0, {}, {}};
  first = parse_char(parse_number(first, last, condition.group), last, ')');
  first = parse_content(first, last, ':', condition.if_set);
  first = parse_content(first, last, ')', condition.if_unset);
  append(condition, std::max(condition.if_set.depth, condition.if_unset.depth) + 1);
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_content(iterator first, iterator last, char stop,
                                                      node_list& content) {
  node_list const outer = std::exchange(list_, {});
  ++nesting_;
  first = parse_char(parse(first, last, stop), last, stop);
  --nesting_;
  content = std::exchange(list_, outer);
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_escape(iterator first, iterator last) {
  if (++first == last) {
    append(literal_data{u'\\'});
    return first;
  }
  unit_t u = to_unit(*first);
  if (u == u'Q') return parse_quoted(++first, last);
  if (auto const code = anchor_of_letter(u)) {
    append(anchor_data{*code});
    return ++first;
  }
  if (auto const letter = class_of_letter(u)) {
    append(*letter);
    return ++first;
  }
  if (detail::between(u, '1', '9') && digit_value(u) <= capture_count_) {
    unsigned number = 0;
    while (first != last && digit_value(to_unit(*first)) < 10 &&
           number * 10 + digit_value(to_unit(*first)) <= capture_count_) {
      number = number * 10 + digit_value(to_unit(*first++));
    }
    append(backreference_data{number});
    return first;
  }
  first = regex::parse_escape(first, last, u);
  append(literal_data{u});
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_quoted(iterator first, iterator last) {
  for (; first != last; ++first) {
    if (begins_with(first, last, "\\E")) return first + 2;
    append(literal_data{to_unit(*first)});
  }
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_class(iterator first, iterator last) {
  range_data members{{}, {}, false};
  if (begins_with(++first, last, "^")) {
    members.negate = true;
    ++first;
  }
  while (first != last && !is_unit(*first, ']')) first = parse_class_member(first, last, members);
  first = parse_char(first, last, ']');
  if (members.ranges.empty() && members.classes.size() == 1) {
    class_data const& only = members.classes.front();
    append(class_data{only.code, only.negate != members.negate});
  } else {
    append(std::move(members));
  }
  return first;
}

template <class T>
typename parser<T>::iterator parser<T>::parse_class_member(iterator first, iterator last,
                                                           range_data& members) {
  if (begins_with(first, last, "[:")) return parse_named_class(first + 2, last, members);
  if (is_unit(*first, '\\') && first + 1 != last) {
    if (auto const letter = class_of_letter(to_unit(first[1]))) {
      members.classes.push_back(*letter);
      return first + 2;
    }
  }
  return parse_range(first, last, members);
}

template <class T>
typename parser<T>::iterator parser<T>::parse_named_class(iterator first, iterator last,
                                                          range_data& members) {
  bool const negate = begins_with(first, last, "^");
  if (negate) ++first;
  std::string name;
  for (; first != last && traits<T>::is_lower(*first); ++first) name += static_cast<char>(*first);
  if (auto const code = class_of_name(name)) {
    members.classes.push_back({*code, negate});
  } else {
    report("unknown character class '" + name + "'");
  }
  return parse_string(first, last, ":]");
}

template <class T>
typename parser<T>::iterator parser<T>::parse_range(iterator first, iterator last,
                                                    range_data& members) {
  auto const parse_unit = [&](unit_t& u) {
    u = to_unit(*first++);
    if (u == u'\\') first = regex::parse_escape(first, last, u);
  };
  unit_t low, high;
  parse_unit(low);
  high = low;
  if (begins_with(first, last, "-") && first + 1 != last && !is_unit(first[1], ']')) {
    ++first;
    parse_unit(high);
  }
  members.ranges.emplace_back(low, high);
  return first;
}

template class parser<char>;
template class parser<char16_t>;

}  // namespace regex
