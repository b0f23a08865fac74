#pragma once

#include <algorithm>

namespace regex {

template <class Iterator>
visit_nfa<Iterator>::visit_nfa(nfa_graph const& pattern, Iterator first, Iterator last,
                               limits const& allowed)
    : pattern_(pattern),
      first_(first),
      last_(last),
      group_count_(pattern.group_count),
      position_(first),
      groups_(pattern.group_count),
      loops_(pattern.counter_count),
      allowed_(allowed),
      steps_left_(std::min(slice, allowed.steps)),
      steps_in_reserve_(allowed.steps - steps_left_) {}

template <class Iterator>
bool visit_nfa<Iterator>::run(Iterator start) {
  if (gave_up_) return false;
  init(pattern_.start, start);
  while (current_) {
    if (--steps_left_ < 0 && !next_slice()) return false;
    graph::accept(*current_, *this);
  }
  if (failed_) return false;
  groups_[0].begin = start;
  groups_[0].end = position_;
  groups_[0].unset = false;
  return true;
}

template <class Iterator>
void visit_nfa<Iterator>::init(graph::nfa_node const* start_node, Iterator position) {
  restore_all(0);
  stack_.truncate(0);
  nested_.clear();
  current_ = start_node;
  position_ = position;
  failed_ = false;
  push_record(record::fail, nullptr);
}

// What may be spent.

template <class Iterator>
bool visit_nfa<Iterator>::next_slice() {
  steps_in_reserve_ += steps_left_;  // what a loop over units took beyond the slice
  if (steps_in_reserve_ <= 0 && !counted_text_) {
    counted_text_ = true;
    steps_in_reserve_ += allowed_.steps_per_unit * std::distance(first_, last_);
  }
  steps_left_ = std::min(slice, steps_in_reserve_);
  steps_in_reserve_ -= steps_left_;
  if (steps_left_ <= 0 || stack_.bytes() + actions_.bytes() > allowed_.bytes) give_up();
  return !gave_up_;
}

template <class Iterator>
void visit_nfa<Iterator>::give_up() {
  gave_up_ = failed_ = true;
  current_ = nullptr;
}

// Backtracking.

template <class Iterator>
typename visit_nfa<Iterator>::record& visit_nfa<Iterator>::push_record(
    typename record::kind what, graph::nfa_node const* node) {
  record& r = stack_.push();
  r.node = node;
  r.position = position_;
  r.actions = actions_.size();
  r.count = 0;
  r.what = what;
  return r;
}

template <class Iterator>
void visit_nfa<Iterator>::on_backtrack(typename action::kind variable, std::size_t index,
                                       std::uint32_t number, Iterator position) {
  action& a = actions_.push();
  a.variable = variable;
  a.index = static_cast<std::uint32_t>(index);
  a.number = number;
  a.position = position;
}

template <class Iterator>
void visit_nfa<Iterator>::restore_all(std::size_t height) {
  for (; actions_.size() > height; actions_.pop()) restore(actions_.top());
}

template <class Iterator>
void visit_nfa<Iterator>::restore(action const& a) {
  switch (a.variable) {
    case action::group_begin:
      groups_[a.index].begin = a.position;
      break;
    case action::group_end:
      groups_[a.index].end = a.position;
      break;
    case action::group_opened:
      groups_[a.index].opened = a.position;
      break;
    case action::group_unset:
      groups_[a.index].unset = a.number != 0;
      break;
    case action::loop_count:
      loops_[a.index].count = a.number;
      break;
    case action::loop_start:
      loops_[a.index].start = a.position;
      break;
    case action::ignore_case:
      ignore_case_ = a.number != 0;
      break;
    case action::dot_matches_newline:
      dot_matches_newline_ = a.number != 0;
      break;
    case action::recursion_level:
      recursion_level_ = a.number;
      break;
    case action::continuation:
      continuations_[a.index] = a.number;
      break;
  }
}

template <class Iterator>
void visit_nfa<Iterator>::do_backtrack() {
  for (;;) {
    record const& r = stack_.top();
    restore_all(r.actions);
    position_ = r.position;
    switch (r.what) {
      case record::fail:
        failed_ = true;
        current_ = nullptr;
        stack_.pop();
        return;
      case record::resume:
        current_ = r.node;
        stack_.pop();
        return;
      case record::leave_loop:
        stack_.pop();
        return leave_loop(static_cast<graph::repeat_node const&>(*r.node));
      case record::enter_loop:
        stack_.pop();
        return enter_loop(static_cast<graph::repeat_node const&>(*r.node));
      case record::give_back:
        return give_back();
      case record::take_more:
        if (take_more()) return;
        break;
      case record::end_of_nested:
        stack_.pop();
        if (nested_run_failed()) return;
        break;
    }
  }
}

// Nodes that read units.

template <class Iterator>
template <class Use>
auto visit_nfa<Iterator>::with_unit_test(graph::nfa_node const& n, Use use) {
  switch (n.kind) {
    case graph::node_kind::literal: {
      unit_t const unit = static_cast<graph::literal_node const&>(n).unit;
      if (!ignore_case_) return use([unit](value c) { return to_unit(c) == unit; });
      bool const fits = to_unit(static_cast<value>(unit)) == unit;
      return use([unit, fits](value c) {
        return to_unit(c) == unit || (fits && text::equal_nocase(c, static_cast<value>(unit)));
      });
    }
    case graph::node_kind::class_: {
      auto const& data = static_cast<graph::class_node const&>(n);
      bool const negate = data.negate;
      if (data.code == unit_class::any) {
        bool const newline = dot_matches_newline_;
        return use([=](value c) { return (newline || to_unit(c) != u'\n') != negate; });
      }
      return use([=, code = data.code](value c) { return text::is(code, c) != negate; });
    }
    default: {
      auto const& data = static_cast<graph::range_node const&>(n);
      return use([&data](value c) { return data.set.contains(c) != data.negate; });
    }
  }
}

template <class Iterator>
template <class Test>
void visit_nfa<Iterator>::read_unit(bool reverse, graph::nfa_node const* next, Test test) {
  if (at_end(reverse)) return do_backtrack();
  if (reverse) {
    Iterator before = position_;
    if (!test(*--before)) return do_backtrack();
    position_ = before;
  } else {
    if (!test(*position_)) return do_backtrack();
    ++position_;
  }
  current_ = next;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::literal_node const& n) {
  with_unit_test(n, [&](auto test) { read_unit(n.reverse, n.next, test); });
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::class_node const& n) {
  with_unit_test(n, [&](auto test) { read_unit(n.reverse, n.next, test); });
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::range_node const& n) {
  with_unit_test(n, [&](auto test) { read_unit(n.reverse, n.next, test); });
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::backreference_node const& n) {
  bool const is_set = n.group < group_count_ && !groups_[group_index(n.group)].unset;
  if (!is_set || !compare_group(groups_[group_index(n.group)], n.reverse)) return do_backtrack();
  current_ = n.next;
}

template <class Iterator>
bool visit_nfa<Iterator>::compare_group(SubMatch<Iterator> const& group, bool reverse) {
  Iterator const end = reverse ? group.begin : group.end;
  for (Iterator it = reverse ? group.end : group.begin; it != end; --steps_left_) {
    if (at_end(reverse)) return false;
    Iterator at = position_;
    if (reverse) --it, --at;
    bool const equal = ignore_case_ ? text::equal_nocase(*it, *at) : *it == *at;
    if (!equal) return false;
    if (!reverse) ++it;
    step(reverse);
  }
  return true;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::anchor_node const& n) {
  if (!holds(n.code)) return do_backtrack();
  current_ = n.next;
}

template <class Iterator>
bool visit_nfa<Iterator>::holds(graph::anchor code) const {
  using graph::anchor;
  switch (code) {
    case anchor::text_start:
      return position_ == first_;
    case anchor::text_end:
      return position_ == last_;
    case anchor::line_start:
      return position_ == first_ || is_line_feed(std::prev(position_));
    case anchor::line_end:
      return position_ == last_ || is_line_feed(position_);
    case anchor::word_start:
      return !is_word_before(position_) && is_word_at(position_);
    case anchor::word_end:
      return is_word_before(position_) && !is_word_at(position_);
    case anchor::word_boundary:
      return is_word_before(position_) != is_word_at(position_);
    case anchor::not_word_boundary:
      return is_word_before(position_) == is_word_at(position_);
  }
  return false;
}

// Loops and alternatives.

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::or_node const& n) {
  allow_backtrack(n.other);
  current_ = n.next;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::condition_node const& n) {
  bool const is_set = n.group < group_count_ && !groups_[group_index(n.group)].unset;
  current_ = is_set ? n.next : n.other;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::repeat_node const& n) {
  if (n.single) return repeat_single(n);
  loop_state const& loop = loops_[loop_index(n.counter)];
  if (loop.count >= n.max) return leave_loop(n);
  if (loop.count < n.min) return enter_loop(n);
  if (loop.count > 0 && loop.start == position_) return leave_loop(n);
  push_record(n.greedy ? record::leave_loop : record::enter_loop, &n);
  n.greedy ? enter_loop(n) : leave_loop(n);
}

template <class Iterator>
void visit_nfa<Iterator>::enter_loop(graph::repeat_node const& n) {
  std::size_t const index = loop_index(n.counter);
  loop_state& loop = loops_[index];
  on_backtrack(action::loop_count, index, loop.count);
  on_backtrack(action::loop_start, index, 0, loop.start);
  ++loop.count;
  loop.start = position_;
  current_ = n.content;
}

template <class Iterator>
void visit_nfa<Iterator>::leave_loop(graph::repeat_node const& n) {
  std::size_t const index = loop_index(n.counter);
  on_backtrack(action::loop_count, index, loops_[index].count);
  loops_[index].count = 0;
  current_ = n.next;
}

template <class Iterator>
template <class Test>
std::uint32_t visit_nfa<Iterator>::read_units(bool reverse, std::uint32_t max, Test test) {
  std::uint32_t n = 0;
  Iterator it = position_;
  if (reverse) {
    for (; n < max && it != first_ && test(*std::prev(it)); ++n) --it;
  } else {
    for (; n < max && it != last_ && test(*it); ++n) ++it;
  }
  position_ = it;
  steps_left_ -= n;
  return n;
}

template <class Iterator>
void visit_nfa<Iterator>::repeat_single(graph::repeat_node const& n) {
  std::uint32_t const wanted = n.greedy ? n.max : std::min(n.min, n.max);
  std::uint32_t const count =
      with_unit_test(*n.content, [&](auto test) { return read_units(n.reverse, wanted, test); });
  if (count < std::min(n.min, n.max)) return do_backtrack();
  if (n.greedy && count > n.min) {
    push_record(record::give_back, &n).count = count - n.min;
  } else if (!n.greedy && n.max > n.min) {
    push_record(record::take_more, &n).count = n.max - n.min;
  }
  current_ = n.next;
}

template <class Iterator>
bool visit_nfa<Iterator>::must_fail_after(graph::repeat_node const& n) {
  if (!n.follow) return false;
  return position_ == last_ ||
         !with_unit_test(*n.follow, [&](auto test) { return test(*position_); });
}

template <class Iterator>
void visit_nfa<Iterator>::give_back() {
  record& r = stack_.top();
  auto const& n = static_cast<graph::repeat_node const&>(*r.node);
  do {
    step(!n.reverse);
    --r.count;
    --steps_left_;
  } while (r.count > 0 && must_fail_after(n));
  r.position = position_;
  if (r.count == 0) stack_.pop();
  current_ = n.next;
}

template <class Iterator>
bool visit_nfa<Iterator>::take_more() {
  record& r = stack_.top();
  auto const& n = static_cast<graph::repeat_node const&>(*r.node);
  bool more;
  do {
    more =
        with_unit_test(*n.content, [&](auto test) { return read_units(n.reverse, 1, test) == 1; });
  } while (more && --r.count > 0 && must_fail_after(n));
  r.position = position_;
  if (!more || r.count == 0) stack_.pop();
  if (more) current_ = n.next;
  return more;
}

// Captures.

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::capture_begin_node const& n) {
  n.reverse ? close_group(n.group, true) : open_group(n.group);
  current_ = n.next;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::capture_end_node const& n) {
  n.reverse ? open_group(n.group) : close_group(n.group, false);
  current_ = n.next;
}

template <class Iterator>
void visit_nfa<Iterator>::open_group(unsigned n) {
  std::size_t const index = group_index(n);
  on_backtrack(action::group_opened, index, 0, groups_[index].opened);
  groups_[index].opened = position_;
}

template <class Iterator>
void visit_nfa<Iterator>::close_group(unsigned n, bool reverse) {
  std::size_t const index = group_index(n);
  SubMatch<Iterator>& group = groups_[index];
  on_backtrack(action::group_begin, index, 0, group.begin);
  on_backtrack(action::group_end, index, 0, group.end);
  group.begin = reverse ? position_ : group.opened;
  group.end = reverse ? group.opened : position_;
  if (group.unset) on_backtrack(action::group_unset, index, true);
  group.unset = false;
}

// Contents that are run to their end before anything else.

template <class Iterator>
void visit_nfa<Iterator>::begin_nested(graph::nfa_node const& n, graph::nfa_node const* content) {
  nested_.push_back({&n, position_, stack_.size(), recursion_level_});
  push_record(record::end_of_nested, &n);
  current_ = content;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::look_around_node const& n) {
  begin_nested(n, n.content);
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::no_backtrack_node const& n) {
  begin_nested(n, n.content);
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::final_node const&) {
  unsigned const level = nested_.empty() ? 0 : nested_.back().recursion_level;
  if (recursion_level_ > level) {
    current_ = pattern_.nodes[continuations_[recursion_level_]].get();
  } else if (nested_.empty()) {
    current_ = nullptr;
  } else {
    nested_run_matched();
  }
}

template <class Iterator>
void visit_nfa<Iterator>::nested_run_matched() {
  nested_run const run = nested_.back();
  nested_.pop_back();
  current_ = run.node->next;
  // The ways that the content did not take are dropped, the last of them its own.
  stack_.truncate(run.records + 1);
  std::size_t const actions = stack_.top().actions;
  stack_.pop();
  if (run.node->kind == graph::node_kind::no_backtrack) return;

  auto const& look = static_cast<graph::look_around_node const&>(*run.node);
  position_ = run.position;
  if (look.type != graph::group_type::look_ahead) restore_all(actions);
  if (look.is_negative()) do_backtrack();
}

template <class Iterator>
bool visit_nfa<Iterator>::nested_run_failed() {
  nested_run const run = nested_.back();
  nested_.pop_back();
  if (run.node->kind == graph::node_kind::no_backtrack) return false;
  if (!static_cast<graph::look_around_node const&>(*run.node).is_negative()) return false;
  current_ = run.node->next;
  return true;
}

// Recursion.

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::recursion_begin_node const& n) {
  if (recursion_level_ == max_recursion_level) {
    if (!told_of_recursion_) report("ignoring (?R) -- too many recursions");
    told_of_recursion_ = true;
    current_ = n.end->next;
    return;
  }
  on_backtrack(action::recursion_level, 0, recursion_level_);
  ++recursion_level_;
  on_backtrack(action::continuation, recursion_level_, continuations_[recursion_level_]);
  continuations_[recursion_level_] = n.end->index;
  on_backtrack(action::ignore_case, 0, ignore_case_);
  on_backtrack(action::dot_matches_newline, 0, dot_matches_newline_);
  ignore_case_ = dot_matches_newline_ = false;
  clear_groups_of_level();
  current_ = n.next;
}

template <class Iterator>
void visit_nfa<Iterator>::clear_groups_of_level() {
  std::size_t const levels = recursion_level_ + 1;
  if (groups_.size() < levels * group_count_) {
    groups_.resize(levels * group_count_);
    loops_.resize(levels * pattern_.counter_count);
  }
  for (unsigned n = 1; n < group_count_; ++n) {
    SubMatch<Iterator>& group = groups_[group_index(n)];
    if (group.unset) continue;
    on_backtrack(action::group_unset, group_index(n), false);
    group.unset = true;
  }
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::recursion_end_node const& n) {
  on_backtrack(action::recursion_level, 0, recursion_level_);
  --recursion_level_;
  on_backtrack(action::ignore_case, 0, ignore_case_);
  on_backtrack(action::dot_matches_newline, 0, dot_matches_newline_);
  ignore_case_ = n.ignore_case;
  dot_matches_newline_ = n.dot_matches_newline;
  current_ = n.next;
}

template <class Iterator>
void visit_nfa<Iterator>::visit(graph::change_flag_node const& n) {
  bool const is_case = n.flag == graph::flag::ignore_case;
  bool& flag = is_case ? ignore_case_ : dot_matches_newline_;
  on_backtrack(is_case ? action::ignore_case : action::dot_matches_newline, 0, flag);
  flag = n.value;
  current_ = n.next;
}

}  // namespace regex
