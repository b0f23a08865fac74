#pragma once

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <vector>

#include "regex/nfa.h"
#include "regex/parse.h"
#include "regex/stack.h"

namespace regex {

/// What a search may spend. A step is a node run or a unit read by a loop over single units; a
/// search may take `steps` and another `steps_per_unit` for each unit of the text.
struct limits {
  std::int64_t steps = 10'000'000;
  std::int64_t steps_per_unit = 100;
  std::size_t bytes = std::size_t{256} << 20;  // of what is remembered for backtracking
};

/// Nested recursions into the whole pattern; further ones are run as if they were absent.
inline constexpr unsigned max_recursion_level = 63;

/// The text of a group at one level of recursion.
template <class Iterator>
struct SubMatch {
  Iterator begin{}, end{};
  Iterator opened{};  // where a group that isn't closed yet was entered
  bool unset = true;
};

/// A variable of the machine, and the value that backtracking gives back to it.
template <class Iterator>
struct Action {
  enum kind : std::uint32_t {
    group_begin,
    group_end,
    group_opened,
    group_unset,
    loop_count,
    loop_start,
    ignore_case,
    dot_matches_newline,
    recursion_level,
    continuation
  };

  std::uint32_t variable;  // its kind
  std::uint32_t index;     // which of the kind
  std::uint32_t number;    // the old value of one that is a number or a truth,
  Iterator position;       // and of one that is a position
};

/// A way not taken: where to continue, and how much to undo before.
template <class Iterator>
struct BTRecord {
  enum kind : std::uint8_t {
    fail,          // there is no way left
    resume,        // at `node`
    leave_loop,    // go on after `node`
    enter_loop,    // run the content of `node` once more
    give_back,     // a greedy loop over single units goes back by one, `count` times at most
    take_more,     // a lazy one reads one more unit, `count` times at most
    end_of_nested  // the content of a look-around or a group without backtracking failed
  };

  graph::nfa_node const* node;
  Iterator position;
  std::size_t actions;  // how many were stored when this was pushed; those above are undone
  std::uint32_t count;
  kind what;
};

/// The backtracking machine: runs a graph over any bidirectional iterator, forwards or over reverse
/// iterators backwards. Alternatives are tried in the order in which they are written, and the
/// first way through is the match.
///
/// Backtracking undoes exactly what was done since the choice: each change of a variable stores the
/// old value on one stack of actions, and a choice remembers how high that stack was. So failure
/// and a new run leave the machine as it was made, and nothing is cleared from one start position
/// to the next. Neither look-arounds nor recursions use the C++ stack, and nothing is allocated per
/// unit.
///
/// A repeat that took nothing in its last turn, when enough turns are done, isn't run again.
template <class Iterator>
class visit_nfa {
 public:
  visit_nfa(nfa_graph const& pattern, Iterator first, Iterator last, limits const& allowed);

  /// Whether the pattern matches from `start`, which must be in the text; then `group` says where.
  /// False also when it gave up, and from then on always.
  bool run(Iterator start);
  bool gave_up() const { return gave_up_; }

  /// Of the last run, if it matched; group 0 is the whole match.
  SubMatch<Iterator> const& group(unsigned n) const { return groups_[n]; }
  unsigned group_count() const { return group_count_; }

  nfa_graph const& pattern() const { return pattern_; }
  Iterator first() const { return first_; }
  Iterator last() const { return last_; }

  void visit(graph::literal_node const&);
  void visit(graph::class_node const&);
  void visit(graph::range_node const&);
  void visit(graph::anchor_node const&);
  void visit(graph::backreference_node const&);
  void visit(graph::repeat_node const&);
  void visit(graph::or_node const&);
  void visit(graph::capture_begin_node const&);
  void visit(graph::capture_end_node const&);
  void visit(graph::look_around_node const&);
  void visit(graph::no_backtrack_node const&);
  void visit(graph::recursion_begin_node const&);
  void visit(graph::recursion_end_node const&);
  void visit(graph::change_flag_node const&);
  void visit(graph::condition_node const&);
  void visit(graph::final_node const&);

 private:
  using text = traits<typename std::iterator_traits<Iterator>::value_type>;
  using value = typename std::iterator_traits<Iterator>::value_type;
  using record = BTRecord<Iterator>;
  using action = Action<Iterator>;

  struct loop_state {
    std::uint32_t count = 0;  // turns begun; 0 outside the loop
    Iterator start{};         // of the present turn
  };
  /// The machine inside the content of a look-around or a group without backtracking.
  struct nested_run {
    graph::nfa_node const* node;
    Iterator position;
    std::size_t records;  // height of the stack at the start
    unsigned recursion_level;
  };

  void init(graph::nfa_node const* start_node, Iterator position);
  void do_backtrack();
  record& push_record(typename record::kind what, graph::nfa_node const* node);
  void allow_backtrack(graph::nfa_node const* node) { push_record(record::resume, node); }
  void on_backtrack(typename action::kind variable, std::size_t index, std::uint32_t number,
                    Iterator position = {});
  void restore_all(std::size_t height);
  void restore(action const& a);

  template <class Test>
  void read_unit(bool reverse, graph::nfa_node const* next, Test test);
  template <class Test>
  std::uint32_t read_units(bool reverse, std::uint32_t max, Test test);
  /// Calls `use` with the test of the one unit that the node reads.
  template <class Use>
  auto with_unit_test(graph::nfa_node const& n, Use use);
  void step(bool reverse) { reverse ? --position_ : ++position_; }
  bool at_end(bool reverse) const { return position_ == (reverse ? first_ : last_); }

  void repeat_single(graph::repeat_node const&);
  bool must_fail_after(graph::repeat_node const&);
  void give_back();
  bool take_more();
  void enter_loop(graph::repeat_node const&);
  void leave_loop(graph::repeat_node const&);
  void open_group(unsigned n);
  void close_group(unsigned n, bool reverse);
  void begin_nested(graph::nfa_node const& n, graph::nfa_node const* content);
  void nested_run_matched();
  bool nested_run_failed();
  void clear_groups_of_level();
  bool compare_group(SubMatch<Iterator> const& group, bool reverse);
  bool is_word_at(Iterator const& it) const { return it != last_ && text::is_word(*it); }
  bool is_word_before(Iterator it) const { return it != first_ && text::is_word(*--it); }
  bool is_line_feed(Iterator const& it) const { return to_unit(*it) == u'\n'; }
  bool holds(graph::anchor code) const;

  bool next_slice();
  void give_up();

  std::size_t group_index(unsigned n) const { return recursion_level_ * group_count_ + n; }
  std::size_t loop_index(std::uint32_t n) const {
    return recursion_level_ * pattern_.counter_count + n;
  }

  nfa_graph const& pattern_;
  Iterator const first_, last_;
  unsigned const group_count_;

  graph::nfa_node const* current_ = nullptr;
  Iterator position_;
  bool failed_ = false;
  bool ignore_case_ = false;
  bool dot_matches_newline_ = false;
  unsigned recursion_level_ = 0;
  std::uint32_t continuations_[max_recursion_level + 1] = {};  // node index, by level
  std::vector<SubMatch<Iterator>> groups_;  // by level and number; levels are added as reached
  std::vector<loop_state> loops_;           // by level and counter

  regex::stack<record> stack_;
  regex::stack<action> actions_;
  std::vector<nested_run> nested_;

  // Steps are counted in slices, so that a step costs one decrement.
  static constexpr std::int64_t slice = 16384;
  limits const allowed_;
  std::int64_t steps_left_ = slice;  // of the slice
  std::int64_t steps_in_reserve_;    // after that slice
  bool counted_text_ = false;
  bool gave_up_ = false;
  bool told_of_recursion_ = false;
};

}  // namespace regex

#include "regex/visit_nfa_impl.h"
