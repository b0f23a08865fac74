#pragma once

#include <list>
#include <map>
#include <utility>
#include <vector>

#include "text/storage_observer.h"

namespace text {

struct storage;

/// A change of state: the memento before and the one after.
struct undo_key {
  uint32_t from = 0;
  uint32_t to = 0;

  auto operator<=>(undo_key const&) const = default;
};

/// Keeps ranges of the text valid while the text changes. A notification is one range that is only
/// kept up to date; a mirror is a pair of ranges where edits made in the first are repeated in the
/// second, by further changes of the storage right after the user's.
///
/// With memento tracking on, the lists as they stood at each state are kept, and undo and redo put
/// them back instead of adjusting them; the entries live as long as the observer. With many mirrors
/// the states between one repetition and the next are without mirrors: a group takes undo and redo
/// across them anyway, and keeping each would take memory by the square of their number.
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
  using mirror_list = std::list<mirror>;
  using notification_list = std::list<subset>;

  /// Edits to be repeated; offsets count units from the start of the source.
  struct pending_erase {
    size_t offset;
    size_t length;
    subset* target;
  };
  struct pending_insert {
    size_t offset;
    subset* target;
  };

  iterator_observer(text::storage& storage, bool track_memento);
  iterator_observer(iterator_observer const&) = delete;
  iterator_observer& operator=(iterator_observer const&) = delete;

  /// The holder reads the present range through the result, which is good until the range is
  /// removed, or undo goes back to a state without it.
  notification_list::iterator add_notify(subset const& range);
  void remove_notify(notification_list::iterator entry);
  mirror_list::iterator add_mirror(subset const& source, subset const& mirror);
  void remove_mirror(mirror_list::iterator entry);
  /// The same for many at a time.
  void add_mirrors(std::vector<mirror> const& added);
  void remove_all_mirrors();

  void will_change_memento(unsigned long from, unsigned long to) override;
  void did_change_memento(unsigned long from, unsigned long to) override;
  void did_insert(text::iterator const& first, text::iterator const& last) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  /// Mirrors end: what is replaced all over a text isn't typed in columns.
  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;

  text::storage* storage;
  mirror_list mirrors;
  mirror_list previous_mirrors;  ///< before the current change
  notification_list notifications;
  notification_list previous_notifications;
  std::map<undo_key, mirror_list> mirror_undo_map;
  std::map<undo_key, notification_list> notify_undo_map;
  std::vector<text::iterator_observer::pending_erase> pending_erases;
  std::vector<text::iterator_observer::pending_insert> pending_inserts;
  std::vector<char_t> did_insert_data;  ///< the last insertion; kept only while there are mirrors
  uint32_t max_memento = 0;
  bool updating_mirror = false;
  bool performing_undo = false;
  bool replacing = false;
  bool track_memento;

 private:
  class ranges_by_line;

  void restore_lists(undo_key key);
  void store_changed_lists(undo_key key);
  bool keeps_each_state() const;
  template <typename Adjust>
  void adjust_mirrors(text::iterator const& first, text::iterator const& last, Adjust adjust);
  void repeat_edits();
  void repeat_erases();
  void repeat_inserts();

  ranges_by_line* by_line_ =
      nullptr;  // while edits are repeated, as long as lines keep their number
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
