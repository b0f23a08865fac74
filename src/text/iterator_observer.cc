#include "text/iterator_observer.h"

#include <algorithm>

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

/// The ranges of all mirrors, sources and targets, found by their line. An edit within one line
/// touches no others, so repeating it on a hundred thousand lines looks at each range once.
class iterator_observer::ranges_by_line {
 public:
  explicit ranges_by_line(mirror_list& mirrors) {
    ranges_.reserve(2 * mirrors.size());
    for (mirror& pair : mirrors) {
      add(pair.second);
      add(pair.first);
    }
    std::stable_sort(ranges_.begin(), ranges_.end(), [](subset const* a, subset const* b) {
      return a->first_line < b->first_line;
    });
  }

  template <typename F>
  void for_each_at(uint32_t line, F f) const {
    for (subset* range : long_ranges_) f(*range);
    auto it = std::lower_bound(ranges_.begin(), ranges_.end(), line,
                               [](subset const* s, uint32_t at) { return s->first_line < at; });
    for (; it != ranges_.end() && (*it)->first_line == line; ++it) f(**it);
  }

 private:
  void add(subset& range) {
    (range.first_line == range.last_line ? ranges_ : long_ranges_).push_back(&range);
  }

  std::vector<subset*> ranges_, long_ranges_;  // those within a line, and the others
};

iterator_observer::iterator_observer(text::storage& of, bool track)
    : storage(&of), track_memento(track) {}

namespace {

/// Up to as many mirrors all states are kept, also those in the middle of repeating an edit.
constexpr size_t few_mirrors = 16;

/// Lists are tied to the state in which they stand. Before one changes, what undoing across the
/// present state has to bring back is stored; after it has grown, what redoing has to.
template <typename Map, typename List>
void store_before_edit(Map& map, List const& list, text::storage const& storage) {
  map.try_emplace({storage.current_memento, storage.previous_memento}, list);
}

template <typename Map, typename List>
void store_after_edit(Map& map, List const& list, text::storage const& storage) {
  map[{storage.previous_memento, storage.current_memento}] = list;
}

}  // namespace

iterator_observer::notification_list::iterator iterator_observer::add_notify(subset const& range) {
  if (track_memento) store_before_edit(notify_undo_map, notifications, *storage);
  auto const entry = notifications.insert(notifications.end(), range);
  if (track_memento) store_after_edit(notify_undo_map, notifications, *storage);
  return entry;
}

void iterator_observer::remove_notify(notification_list::iterator entry) {
  if (track_memento) store_before_edit(notify_undo_map, notifications, *storage);
  notifications.erase(entry);
}

iterator_observer::mirror_list::iterator iterator_observer::add_mirror(subset const& source,
                                                                       subset const& mirror) {
  if (track_memento) store_before_edit(mirror_undo_map, mirrors, *storage);
  auto const entry = mirrors.insert(mirrors.end(), {source, mirror});
  if (track_memento) store_after_edit(mirror_undo_map, mirrors, *storage);
  return entry;
}

void iterator_observer::remove_mirror(mirror_list::iterator entry) {
  if (track_memento) store_before_edit(mirror_undo_map, mirrors, *storage);
  mirrors.erase(entry);
}

void iterator_observer::add_mirrors(std::vector<mirror> const& added) {
  if (track_memento) store_before_edit(mirror_undo_map, mirrors, *storage);
  mirrors.insert(mirrors.end(), added.begin(), added.end());
  if (track_memento) store_after_edit(mirror_undo_map, mirrors, *storage);
}

void iterator_observer::remove_all_mirrors() {
  if (mirrors.empty()) return;
  if (track_memento) store_before_edit(mirror_undo_map, mirrors, *storage);
  mirrors.clear();
}

bool iterator_observer::keeps_each_state() const {
  return !updating_mirror || mirrors.size() <= few_mirrors;
}

void iterator_observer::will_change_memento(unsigned long /*from*/, unsigned long to) {
  // New numbers exceed all old ones, so one that was seen before is undo or redo.
  performing_undo = max_memento >= to;
  max_memento = std::max(max_memento, static_cast<uint32_t>(to));
  if (performing_undo) return;
  if (keeps_each_state()) previous_mirrors = mirrors;
  previous_notifications = notifications;
}

/// Moves all mirrors for an edit that repeats another.
template <typename Adjust>
void iterator_observer::adjust_mirrors(text::iterator const& first, text::iterator const& last,
                                       Adjust adjust) {
  if (by_line_ != nullptr && first.line == last.line) {
    by_line_->for_each_at(first.line, [&](subset& range) { adjust(first, last, range); });
    return;
  }
  by_line_ = nullptr;  // from here on lines have other numbers
  for (mirror& pair : mirrors) {
    adjust(first, last, pair.second);
    adjust(first, last, pair.first);
  }
}

void iterator_observer::will_replace(text::replacement const& what) {
  replacing = true;
  if (performing_undo) return;
  mirrors.clear();
  if (notifications.empty()) return;
  auto const edits = what.edits();
  for (subset& range : notifications)
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
      if (edit->first != edit->last) text::adjust_for_erase(edit->first, edit->last, range);
      if (edit->first != edit->new_last)
        text::adjust_for_insert(edit->first, edit->new_last, range);
    }
}

void iterator_observer::did_replace(text::replacement const&) {
  replacing = false;
}

void iterator_observer::will_erase(text::iterator const& first, text::iterator const& last) {
  if (performing_undo || replacing) return;
  auto const adjust = [](auto const& from, auto const& to, subset& range) {
    adjust_for_erase(from, to, range);
  };
  for (subset& range : notifications) adjust(first, last, range);
  if (updating_mirror) return adjust_mirrors(first, last, adjust);
  for (mirror& pair : mirrors) {
    adjust(first, last, pair.second);
    text::iterator const start = first_of(pair.first, storage);
    text::iterator const left = std::max(first, start);
    text::iterator const right = std::min(last, last_of(pair.first, storage));
    if (left < right)
      pending_erases.push_back(
          {static_cast<size_t>(left - start), static_cast<size_t>(right - left), &pair.second});
    adjust(first, last, pair.first);
  }
}

void iterator_observer::did_insert(text::iterator const& first, text::iterator const& last) {
  if (performing_undo || replacing) return;
  auto const adjust_mirror = [](auto const& from, auto const& to, subset& range) {
    adjust_mirror_for_insert(from, to, range);
  };
  for (subset& range : notifications) adjust_for_insert(first, last, range);
  if (updating_mirror) return adjust_mirrors(first, last, adjust_mirror);
  did_insert_data.clear();
  if (!mirrors.empty()) append_units(first, last, did_insert_data);
  for (mirror& pair : mirrors) {
    adjust_mirror(first, last, pair.second);
    if (inside(first, pair.first))
      pending_inserts.push_back(
          {static_cast<size_t>(first - first_of(pair.first, storage)), &pair.second});
    adjust_for_insert(first, last, pair.first);
  }
}

void iterator_observer::did_change_memento(unsigned long from, unsigned long to) {
  undo_key const key{static_cast<uint32_t>(from), static_cast<uint32_t>(to)};
  if (performing_undo) {
    if (track_memento) restore_lists(key);
    performing_undo = false;
    return;
  }
  if (track_memento) store_changed_lists(key);
  // The repeated edits come back to this function; they must not end the updating.
  if (updating_mirror || (pending_erases.empty() && pending_inserts.empty())) return;
  repeat_edits();
}

void iterator_observer::repeat_edits() {
  ranges_by_line ranges(mirrors);
  by_line_ = &ranges;
  updating_mirror = true;
  repeat_erases();
  repeat_inserts();
  updating_mirror = false;
  by_line_ = nullptr;
  if (track_memento) store_after_edit(mirror_undo_map, mirrors, *storage);
}

void iterator_observer::restore_lists(undo_key key) {
  if (auto const found = mirror_undo_map.find(key); found != mirror_undo_map.end())
    mirrors = found->second;
  if (auto const found = notify_undo_map.find(key); found != notify_undo_map.end())
    notifications = found->second;
}

void iterator_observer::store_changed_lists(undo_key key) {
  undo_key const back{key.to, key.from};
  if (!keeps_each_state()) {
    mirror_undo_map[key].clear();
    mirror_undo_map[back].clear();
  } else if (previous_mirrors != mirrors) {
    mirror_undo_map[key] = mirrors;
    mirror_undo_map[back] = previous_mirrors;
  }
  if (previous_notifications != notifications) {
    notify_undo_map[key] = notifications;
    notify_undo_map[back] = previous_notifications;
  }
}

void iterator_observer::repeat_erases() {
  for (auto const& pending : std::exchange(pending_erases, {})) {
    text::iterator const first = first_of(*pending.target, storage);
    auto const size = static_cast<size_t>(last_of(*pending.target, storage) - first);
    auto const from = static_cast<std::ptrdiff_t>(std::min(pending.offset, size));
    auto const to = static_cast<std::ptrdiff_t>(std::min(pending.offset + pending.length, size));
    storage->erase(first + from, first + to);
  }
}

void iterator_observer::repeat_inserts() {
  for (auto const& pending : std::exchange(pending_inserts, {})) {
    subset grown = *pending.target;
    text::iterator const first = first_of(grown, storage);
    auto const size = static_cast<size_t>(last_of(grown, storage) - first);
    text::iterator const at = first + static_cast<std::ptrdiff_t>(std::min(pending.offset, size));
    text::iterator const behind = storage->insert(std::as_const(at), did_insert_data.data(),
                                                  did_insert_data.data() + did_insert_data.size());
    adjust_for_insert(at, behind, grown);
    *pending.target = grown;
    if (!track_memento || !keeps_each_state()) continue;
    store_after_edit(mirror_undo_map, mirrors, *storage);
    mirror_undo_map[{storage->current_memento, storage->previous_memento}] = previous_mirrors;
  }
}

}  // namespace text
