#pragma once

#include <memory>
#include <vector>

#include "regex/parse_tree.h"

namespace regex {

/// Reads a pattern into a list of nodes, which it owns. A pattern never fails: what is wrong in it
/// is reported on standard error and gets some other meaning. `T` is `char` or `char16_t`.
template <class T>
class parser {
 public:
  using iterator = T const*;
  using visitor = parse_tree::visitor;
  using node = parse_tree::node;
  template <class Data>
  using template_node = parse_tree::template_node<Data>;

  /// Appends what stands in [first, last) up to the unit `stop`, or to the end when that is 0.
  /// Gives the position where it stopped, which is before `stop`.
  iterator parse(iterator first, iterator last, char stop = 0);

  parse_tree::node_list const& list() const { return list_; }
  std::size_t capture_count() const { return capture_count_; }

 private:
  // Each is called at the character that chose it, and gives the position after the construct.
  using method = iterator (parser::*)(iterator, iterator);
  static method method_for(T c);
  iterator parse_repeat(iterator first, iterator last);
  iterator parse_group(iterator first, iterator last);
  iterator parse_or(iterator first, iterator last);
  iterator parse_escape(iterator first, iterator last);
  iterator parse_class(iterator first, iterator last);
  iterator parse_any(iterator first, iterator last);
  iterator parse_bol(iterator first, iterator last);
  iterator parse_eol(iterator first, iterator last);

  iterator parse_bounds(iterator first, iterator last, parse_tree::repeat_data& bounds);
  iterator parse_options(iterator first, iterator last, parse_tree::group_data& group);
  iterator parse_condition(iterator first, iterator last);
  iterator parse_content(iterator first, iterator last, char stop, parse_tree::node_list& content);
  iterator parse_quoted(iterator first, iterator last);
  iterator parse_class_member(iterator first, iterator last, parse_tree::range_data& members);
  iterator parse_named_class(iterator first, iterator last, parse_tree::range_data& members);
  iterator parse_range(iterator first, iterator last, parse_tree::range_data& members);

  template <class Data>
  void append(Data data, unsigned depth = 0);
  void fold_alternatives(std::size_t count);

  std::vector<std::unique_ptr<node>> nodes_;
  parse_tree::node_list list_;
  // What stood left of each "|" of the open calls of parse(), outermost first.
  std::vector<parse_tree::node_list> alternatives_;
  unsigned nesting_ = 0;
  std::size_t capture_count_ = 0;
};

extern template class parser<char>;
extern template class parser<char16_t>;

}  // namespace regex
