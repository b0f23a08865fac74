#include "text/iterator_observer.h"

#include <algorithm>

#include "platform/clusters.h"
#include "text/moved_positions.h"
#include "text/storage.h"

namespace text {

using subset = iterator_observer::subset;

namespace {

text::iterator first_of(subset const& range, text::storage* storage) {
  return {range.first(), storage};
}

text::iterator last_of(subset const& range, text::storage* storage) {
  return {range.last(), storage};
}

/// Where units end that begin at line 0, column 0.
text::pos end_of_units(std::vector<char_t> const& units) {
  auto const newline = std::find(units.rbegin(), units.rend(), u'\n');
  return {static_cast<size_t>(std::count(units.begin(), units.end(), u'\n')),
          static_cast<size_t>(newline - units.rbegin())};
}

uint32_t width_of_line(subset const& range) {
  return range.last_column - range.first_column;
}

/// Moves the start of `range` from `from`, on its first line, to `to`, and what follows along.
void move_start(subset& range, text::pos from, text::pos to) {
  bool const one_line = range.first_line == range.last_line;
  uint32_t const width = width_of_line(range);
  range.first_column = range.first_column - from.column + to.column;
  range.first_line = to.line;
  if (one_line) {
    range.last_line = to.line;
    range.last_column = range.first_column + width;
  } else {
    range.last_line += to.line - from.line;
  }
}

/// What is common to both ways of adjusting for an insertion, once it is known that the range
/// doesn't end before it.
void shift_or_grow(text::pos first, text::pos last, bool before_start, subset& range) {
  uint32_t const lines = last.line - first.line;
  if (first.line < range.first_line) {
    range.first_line += lines;
    range.last_line += lines;
  } else if (before_start) {
    move_start(range, first, last);
  } else if (range.last_line != first.line) {
    range.last_line += lines;
  } else {
    range.last_line = last.line;
    range.last_column = range.last_column - first.column + last.column;
  }
}

}  // namespace

bool inside(text::iterator const& it, subset const& range) {
  return range.first() <= it.pos() && it.pos() <= range.last();
}

void adjust_for_insert(text::pos first, text::pos last, subset& range) {
  if (range.last() < first) return;
  shift_or_grow(first, last, first.line == range.first_line && first.column < range.first_column,
                range);
}

void adjust_mirror_for_insert(text::pos first, text::pos last, subset& range) {
  if (range.last_line < first.line) return;
  // Text at the very place of an empty mirror pushes it along.
  bool const ends_before =
      range.last_column < first.column || (range.last_column == first.column && !range.empty());
  if (range.last_line == first.line && ends_before) return;
  shift_or_grow(first, last, first.line == range.first_line && first.column <= range.first_column,
                range);
}

void adjust_for_erase(text::pos first, text::pos last, subset& range) {
  uint32_t const lines = last.line - first.line;
  if (range.last() <= first) return;
  if (last.line < range.first_line) {
    range.first_line -= lines;
    range.last_line -= lines;
    return;
  }
  if (last <= range.first()) {
    move_start(range, last, first);
    return;
  }

  text::pos const old_first = range.first();
  if (range.last_line > last.line) {
    range.last_line -= lines;
  } else if (range.last() >= last) {
    range.last_line = first.line;
    range.last_column = range.last_column - last.column + first.column;
  } else {
    range.last_line = first.line;
    range.last_column = first.column;
  }
  if (first < old_first) {
    range.first_line = first.line;
    range.first_column = first.column;
  }
}

namespace {

constexpr size_t words_of_subset = 4;

void append_words(range_history::words& to, subset const& range) {
  to.insert(to.end(), {range.first_line, range.first_column, range.last_line, range.last_column});
}

subset subset_at(uint32_t const* words) {
  return {text::pos(words[0], words[1]), text::pos(words[2], words[3])};
}

range_history::words words_of(iterator_observer::mirror_list const& mirrors) {
  range_history::words result;
  result.reserve(2 * words_of_subset * mirrors.size());
  for (auto const& [source, target] : mirrors) {
    append_words(result, source);
    append_words(result, target);
  }
  return result;
}

range_history::words words_of(iterator_observer::notification_list const& ranges) {
  range_history::words result;
  for (subset const& range : ranges) append_words(result, range);
  return result;
}

}  // namespace

iterator_observer::iterator_observer(text::storage& of, bool track)
    : storage(&of),
      mirror_history(2 * words_of_subset),
      notify_history(words_of_subset),
      track_memento(track) {}

iterator_observer::notification_list::iterator iterator_observer::add_notify(subset const& range) {
  auto const entry = notifications.insert(notifications.end(), range);
  arrive_by_adding();
  return entry;
}

void iterator_observer::remove_notify(notification_list::iterator entry) {
  notifications.erase(entry);
}

void iterator_observer::add_mirror(subset const& source, subset const& mirror) {
  add_mirrors({{source, mirror}});
}

void iterator_observer::add_mirrors(std::vector<mirror> const& added) {
  mirrors.insert(mirrors.end(), added.begin(), added.end());
  arrive_by_adding();
}

void iterator_observer::remove_mirror(mirror_list::iterator entry) {
  forget_pending();
  mirrors.erase(entry);
}

void iterator_observer::remove_all_mirrors() {
  forget_pending();
  mirrors.clear();
}

void iterator_observer::forget_pending() {
  pending_erases.clear();
  pending_inserts.clear();
}

void iterator_observer::will_begin_action() {
  knows_actions_ = true;
  made_state_ = 0;
  rest_.emplace();
  rest_->state = storage->current_memento;
  if (!mirrors.empty()) rest_->mirrors = words_of(mirrors);
  if (!notifications.empty()) rest_->notifications = words_of(notifications);
}

// As in most texts; each action and each change asks.
bool iterator_observer::has_no_ranges() const {
  return mirrors.empty() && notifications.empty() && mirror_history.empty() &&
         notify_history.empty();
}

void iterator_observer::did_end_action() {
  rest_.reset();
  if (made_state_ == storage->current_memento) arrive();
}

/// What is added to a state that an earlier action has made is no part of redoing that one.
void iterator_observer::arrive_by_adding() {
  if (!rest_ || rest_->state != storage->current_memento) arrive();
}

void iterator_observer::arrive() {
  if (!track_memento || has_no_ranges()) return;
  mirror_history.arrive(storage->current_memento, words_of(mirrors));
  notify_history.arrive(storage->current_memento, words_of(notifications));
}

void iterator_observer::leave(uint32_t from, uint32_t to) {
  bool const had_none = !rest_ || (rest_->mirrors.empty() && rest_->notifications.empty());
  if (had_none && has_no_ranges()) return;
  bool const at_rest = rest_ && rest_->state == from;
  mirror_history.leave(from, to, at_rest ? rest_->mirrors : words_of(mirrors));
  notify_history.leave(from, to, at_rest ? rest_->notifications : words_of(notifications));
}

void iterator_observer::restore_lists(uint32_t state, bool undoing) {
  auto const from = [=](range_history const& history) {
    return undoing ? history.after_undo(state) : history.after_redo(state);
  };
  mirrors.clear();
  auto const pairs = from(mirror_history);
  for (size_t at = 0; at < pairs.size(); at += 2 * words_of_subset)
    mirrors.emplace_back(subset_at(&pairs[at]), subset_at(&pairs[at + words_of_subset]));
  notifications.clear();
  auto const ranges = from(notify_history);
  for (size_t at = 0; at < ranges.size(); at += words_of_subset)
    notifications.push_back(subset_at(&ranges[at]));
}

void iterator_observer::will_change_memento(unsigned long from, unsigned long to) {
  if (!storage->is_repeating()) forget_pending();
  // A number that was drawn before comes back by undo or redo only.
  performing_undo = to < storage->next_memento;
  if (!performing_undo && track_memento)
    leave(static_cast<uint32_t>(from), static_cast<uint32_t>(to));
}

void iterator_observer::did_change_memento(unsigned long from, unsigned long to) {
  if (performing_undo) {
    performing_undo = false;
    if (track_memento) restore_lists(static_cast<uint32_t>(to), to < from);
    return;
  }
  made_state_ = static_cast<uint32_t>(to);
  if (!updating_mirror) arrive();
}

void iterator_observer::will_replace(text::replacement const& what) {
  replacing = true;
  if (performing_undo) return;
  if (!updating_mirror) remove_all_mirrors();
  if (notifications.empty()) return;
  moved_positions const moved(what.edits());
  for (subset& range : notifications)
    range = {moved.staying(range.first()), moved.pushed(range.last())};
}

void iterator_observer::did_replace(text::replacement const&) {
  replacing = false;
}

/// Edits are repeated that the user makes, and not those of another view.
bool iterator_observer::repeats_edits() const {
  return !storage->is_repeating() && (rest_ || !knows_actions_);
}

void iterator_observer::will_erase(text::iterator const& first, text::iterator const& last) {
  if (performing_undo || replacing) return;
  for (subset& range : notifications) adjust_for_erase(first, last, range);
  if (updating_mirror) return;
  bool const repeats = repeats_edits();
  for (size_t at = 0; at < mirrors.size(); ++at) {
    auto& [source, target] = mirrors[at];
    adjust_for_erase(first, last, target);
    text::iterator const start = first_of(source, storage);
    text::iterator const left = std::max(first, start);
    text::iterator const right = std::min(last, last_of(source, storage));
    if (repeats && left < right)
      pending_erases.push_back(
          {static_cast<size_t>(left - start), static_cast<size_t>(right - left), at});
    adjust_for_erase(first, last, source);
  }
}

void iterator_observer::did_insert(text::iterator const& first, text::iterator const& last) {
  if (performing_undo || replacing) return;
  for (subset& range : notifications) adjust_for_insert(first, last, range);
  if (updating_mirror || mirrors.empty()) return;
  bool const repeats = repeats_edits();
  for (size_t at = 0; at < mirrors.size(); ++at) {
    auto& [source, target] = mirrors[at];
    adjust_mirror_for_insert(first, last, target);
    if (repeats && inside(first, source))
      pending_inserts.push_back({static_cast<size_t>(first - first_of(source, storage)), at});
    adjust_for_insert(first, last, source);
  }
  if (pending_inserts.empty()) return;
  did_insert_data.clear();
  append_units(first, last, did_insert_data);
}

void iterator_observer::repeat_edits() {
  if (pending_erases.empty() && pending_inserts.empty()) return;
  auto const edits = pending_inserts.empty() ? edits_for_erases() : edits_for_inserts();
  text::unit_view const inserted(did_insert_data.data(),
                                 pending_inserts.empty() ? 0 : did_insert_data.size());
  updating_mirror = true;
  try {
    storage->repeat(edits, inserted);
  } catch (...) {
    updating_mirror = false;
    remove_all_mirrors();
    throw;
  }
  updating_mirror = false;
  move_mirrors(edits);
  forget_pending();
  arrive();
}

// Units are counted in another text than that of a mirror, which may have a pair there.
text::pos iterator_observer::before_pair(text::pos at) const {
  if (unicode::splits_pair(storage->line_units(at.line), at.column)) --at.column;
  return at;
}

text::pos iterator_observer::after_pair(text::pos at) const {
  if (unicode::splits_pair(storage->line_units(at.line), at.column)) ++at.column;
  return at;
}

std::vector<replacement::edit> iterator_observer::edits_for_erases() const {
  std::vector<replacement::edit> edits;
  for (pending_erase const& pending : pending_erases) {
    subset const& target = mirrors[pending.mirror].second;
    text::iterator const start = first_of(target, storage);
    auto const size = static_cast<size_t>(last_of(target, storage) - start);
    text::iterator const first =
        start + static_cast<std::ptrdiff_t>(std::min(pending.offset, size));
    text::iterator const last =
        start + static_cast<std::ptrdiff_t>(std::min(pending.offset + pending.length, size));
    if (first != last) {
      text::pos const at = before_pair(first.pos());
      edits.push_back({at, after_pair(last.pos()), at});
    }
  }
  std::sort(edits.begin(), edits.end(),
            [](auto const& a, auto const& b) { return a.first < b.first; });
  // What several mirrors share is erased once.
  text::pos after;
  std::erase_if(edits, [&](replacement::edit& edit) {
    edit.first = edit.new_last = std::max(edit.first, after);
    after = std::max(after, edit.last);
    return edit.first >= edit.last;
  });
  return edits;
}

std::vector<replacement::edit> iterator_observer::edits_for_inserts() const {
  text::pos const size = end_of_units(did_insert_data);
  std::vector<replacement::edit> edits;
  for (pending_insert const& pending : pending_inserts) {
    subset const& target = mirrors[pending.mirror].second;
    text::iterator const start = first_of(target, storage);
    auto const length = static_cast<size_t>(last_of(target, storage) - start);
    text::pos const at =
        before_pair((start + static_cast<std::ptrdiff_t>(std::min(pending.offset, length))).pos());
    edits.push_back(
        {at, at, {at.line + size.line, size.column + (size.line == 0 ? at.column : 0)}});
  }
  std::sort(edits.begin(), edits.end(),
            [](auto const& a, auto const& b) { return a.first < b.first; });
  return edits;
}

/// As adjusting for one edit after the other would, but for the mirrors to which text was added:
/// these grow also at their edges.
void iterator_observer::move_mirrors(std::vector<replacement::edit> const& edits) {
  moved_positions const moved(edits);
  auto const pushed_along = [&](subset const& range) -> subset {
    text::pos const first = moved.pushed(range.first());
    return {first, range.empty() ? first : moved.staying(range.last())};
  };
  std::vector<bool> grows(mirrors.size());
  for (pending_insert const& pending : pending_inserts) grows[pending.mirror] = true;
  for (size_t at = 0; at < mirrors.size(); ++at) {
    auto& [source, target] = mirrors[at];
    source = pushed_along(source);
    target = grows[at] ? subset(moved.staying(target.first()), moved.pushed(target.last()))
                       : pushed_along(target);
  }
}

}  // namespace text
