#pragma once

#include <optional>
#include <set>

#include "grammar/line_parser.h"

/// A line parser that is plain to see: at each step it searches for every rule of the region, from
/// where it is to the line's end, and takes the earliest match, of those at one place the first. An
/// end pattern that goes first is searched for anew at each step, too.
/// What the real one finds must be the same, but for patterns with \G and \K.
class plain_parser {
 public:
  plain_parser(grammar::catalogue const& all_rules, grammar::path_tree& paths)
      : all_rules_(all_rules), paths_(paths) {
    stack_.push_back({&all_rules.root(0), &all_rules.root(0), 0, {}, ~0u});
  }

  std::vector<grammar::token> parse_line(std::u16string const& line, bool is_last);
  /// A search took too long, so that the result is worth nothing.
  bool gave_up() const { return gave_up_; }

 private:
  using path_id = grammar::path_tree::id;
  using rule = grammar::rule;
  enum class kind { opening, end, swallow };
  struct candidate {
    kind type;
    rule const *owner, *base;
    path_id path;
    grammar::pattern const* nfa;
    grammar::match_groups match;
  };
  struct region {
    rule const *owner, *base;
    path_id path;
    std::set<std::size_t> dropped;  ///< numbers of rules
    unsigned opened_at;             ///< column where its begin matched, if on this line
    unsigned inside = 0;            ///< column where that ended
  };

  void collect(std::vector<candidate>& rules, rule const& owner, rule const& base, path_id path,
               std::set<std::pair<rule const*, rule const*>>& collected);
  std::optional<std::pair<std::size_t, candidate>> cut_at_first_end();
  void close_at_first_end(std::size_t depth, candidate const& end);
  bool find(candidate& best, std::size_t& number);
  void take(candidate const& taken, std::size_t number);
  void store(candidate const& taken, std::vector<grammar::capture> const& captures,
             std::size_t base_index);
  path_id content_of_top();

  grammar::catalogue const& all_rules_;
  grammar::path_tree& paths_;
  std::vector<region> stack_;
  grammar::reference_stack references_;
  grammar::line_text line_;
  grammar::token_list tokens_;
  unsigned position_ = 0;
  bool gave_up_ = false;
};
