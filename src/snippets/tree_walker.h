#pragma once

#include <antlr/AST.hpp>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "snippets/parse_snippet.h"

namespace snippet {

/// Makes text and stops of the tree that the parser has built, running code on the way.
class tree_walker {
 public:
  tree_walker(parse_options const& options, std::vector<std::string>& warnings)
      : options_(options), warnings_(warnings) {}

  /// The node and its siblings after it. False if there are more stops than `max_stops`.
  bool walk(antlr::RefAST node);
  /// Chooses fields and adds the end, once all is walked.
  std::unique_ptr<snippet_t> snippet();

 private:
  void add(std::string_view utf8);
  void add_code(std::string const& code);
  void add_variable(antlr::RefAST const& node);
  void add_replaced_variable(antlr::RefAST const& node);
  void add_stop(antlr::RefAST const& node, bool has_content);
  void add_regexp_mirror(antlr::RefAST const& node);
  bool is_open(int index) const;
  /// Whether a stop of `index` stands in one of `outer`, as far as is known.
  bool has_child(int outer, int index) const;
  /// Whether an index that is open stands in this one elsewhere, which is reported.
  bool would_reverse_nesting(int index);
  std::size_t open_stop(int index);

  parse_options const& options_;
  std::vector<std::string>& warnings_;
  std::u16string text_;
  std::vector<tab_stop_t> stops_;
  std::vector<std::size_t> open_;          // the stops that the present place is in
  std::map<int, std::set<int>> children_;  // the indices that stand in each index
  std::map<int, std::size_t> field_;       // the stop of each index that has content
  std::size_t next_rank_ = 0;
};

}  // namespace snippet
