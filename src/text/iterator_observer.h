#pragma once

#include <list>
#include <optional>
#include <utility>
#include <vector>

#include "text/range_history.h"
#include "text/replacement.h"
#include "text/storage_observer.h"

namespace text {

struct storage;

/// Keeps ranges of the text valid while the text changes. A notification is one range that is only
/// kept up to date; a mirror is a pair of ranges where edits made in the first are repeated in the
/// second, by one further change of the storage right after the user's.
///
/// With memento tracking on, undo and redo put the lists back as they stood at each state, instead
/// of adjusting them: undo as the state was left, redo as it was arrived at (see `range_history`).
/// The caller says when an action begins and ends. The lists at its beginning are then
/// those that undo brings back and the lists at its end those of redo, as with selections; and
/// edits that others make in between are not repeated.
///
/// The owner adds the observer to the storage and removes it. Main thread only.
class iterator_observer : public storage_observer {
 public:
  /// A closed range; both ends may be equal.
  struct subset {
    uint32_t first_line = 0;
    uint32_t last_line = 0;
    uint32_t first_column = 0;
    uint32_t last_column = 0;

    subset() = default;
    subset(text::pos first, text::pos last)
        : first_line(first.line),
          last_line(last.line),
          first_column(first.column),
          last_column(last.column) {}
    subset(text::iterator const& first, text::iterator const& last)
        : subset(first.pos(), last.pos()) {}

    text::pos first() const { return {first_line, first_column}; }
    text::pos last() const { return {last_line, last_column}; }
    bool empty() const { return first() == last(); }
    bool operator==(subset const&) const = default;
  };
  using mirror = std::pair<subset, subset>;  ///< the source, and where its edits are repeated
  using mirror_list = std::vector<mirror>;
  using notification_list = std::list<subset>;

  /// Edits to be repeated; offsets count units from the start of the source, mirrors from 0.
  struct pending_erase {
    size_t offset;
    size_t length;
    size_t mirror;
  };
  struct pending_insert {
    size_t offset;
    size_t mirror;
  };

  iterator_observer(text::storage& storage, bool track_memento);
  iterator_observer(iterator_observer const&) = delete;
  iterator_observer& operator=(iterator_observer const&) = delete;

  /// The holder reads the present range through the result, which is good until the range is
  /// removed, or undo goes back to a state without it.
  notification_list::iterator add_notify(subset const& range);
  void remove_notify(notification_list::iterator entry);
  void add_mirror(subset const& source, subset const& mirror);
  void add_mirrors(std::vector<mirror> const& added);
  void remove_mirror(mirror_list::iterator entry);
  void remove_all_mirrors();

  void will_begin_action();
  void did_end_action();

  void will_change_memento(unsigned long from, unsigned long to) override;
  void did_change_memento(unsigned long from, unsigned long to) override;
  void did_insert(text::iterator const& first, text::iterator const& last) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  /// Mirrors end: what is replaced all over a text isn't typed in columns.
  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;
  void repeat_edits() override;

  text::storage* storage;
  mirror_list mirrors;
  notification_list notifications;
  range_history mirror_history;
  range_history notify_history;
  std::vector<text::iterator_observer::pending_erase> pending_erases;
  std::vector<text::iterator_observer::pending_insert> pending_inserts;
  std::vector<char_t> did_insert_data;  ///< the last insertion; kept only while there are mirrors
  bool updating_mirror = false;
  bool performing_undo = false;
  bool replacing = false;
  bool track_memento;

 private:
  /// The lists at the beginning of an action.
  struct resting_lists {
    uint32_t state;
    range_history::words mirrors, notifications;
  };

  bool has_no_ranges() const;
  void leave(uint32_t from, uint32_t to);
  void arrive();
  void arrive_by_adding();
  void restore_lists(uint32_t state, bool undoing);
  void forget_pending();
  bool repeats_edits() const;
  text::pos before_pair(text::pos at) const;
  text::pos after_pair(text::pos at) const;
  std::vector<replacement::edit> edits_for_erases() const;
  std::vector<replacement::edit> edits_for_inserts() const;
  void move_mirrors(std::vector<replacement::edit> const& edits);

  std::optional<resting_lists> rest_;  // while there is an action
  bool knows_actions_ = false;
  uint32_t made_state_ = 0;  // the last one that a change has made
};

/// Whether the position lies in the range, both ends included.
bool inside(text::iterator const& it, iterator_observer::subset const& range);

/// Move a range for text that now stands from `first` to `last`. An insertion at either edge of a
/// range is inside it; at the edges of a mirror it is outside.
void adjust_for_insert(text::pos first, text::pos last, iterator_observer::subset& range);
void adjust_mirror_for_insert(text::pos first, text::pos last, iterator_observer::subset& range);
/// Moves a range for text that is about to go. A range that is wholly erased ends up empty at
/// `first`.
void adjust_for_erase(text::pos first, text::pos last, iterator_observer::subset& range);

inline void adjust_for_insert(text::iterator const& first, text::iterator const& last,
                              iterator_observer::subset& range) {
  adjust_for_insert(first.pos(), last.pos(), range);
}
inline void adjust_mirror_for_insert(text::iterator const& first, text::iterator const& last,
                                     iterator_observer::subset& range) {
  adjust_mirror_for_insert(first.pos(), last.pos(), range);
}
inline void adjust_for_erase(text::iterator const& first, text::iterator const& last,
                             iterator_observer::subset& range) {
  adjust_for_erase(first.pos(), last.pos(), range);
}

}  // namespace text
