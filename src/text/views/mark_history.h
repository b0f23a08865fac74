#pragma once

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "text/views/folding_filter.h"

namespace text {

/// Brings bookmarks and folds back that a change has taken away when the change is taken back: by
/// undo those that were in erased text, by redo those that were set since it was typed. What else
/// happens to marks is the filters' affair. Bookmarks that the user has changed meanwhile on the
/// lines concerned stay as they are.
///
/// A fold that undo or redo opens to show the caret is closed again when they go on. One that an
/// action opens for the text that it changes is closed when that is undone, and opened by redo.
///
/// Kept is what was lost, by the step that lost it. Steps out of reach are forgotten.
class view::mark_history : public storage_observer {
 public:
  /// The first of the view's observers: it inspects what will be erased before filters are
  /// notified, and folds are restored before the selection is.
  explicit mark_history(text::view& view);
  ~mark_history() override;

  void will_begin_action();
  void did_end_action();
  /// The present action is a part of the one that has made the last change.
  void continue_action();
  /// A fold is opened to show the selection.
  void will_open(folding_filter::folding_t const& fold);

  void will_change_memento(unsigned long from, unsigned long to) override;
  void will_erase(text::iterator const& first, text::iterator const& last) override;
  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;
  void did_change_memento(unsigned long from, unsigned long to) override;

  bool empty() const { return steps_.empty(); }

 private:
  using bookmarks = std::vector<text::pos>;
  using folds = std::vector<folding_filter::touched_fold>;
  using opened_folds = std::vector<folding_filter::folding_t>;

  /// The bookmarks of some lines before a change, and those of what came of the lines.
  struct exchanged_lines {
    uint32_t first, last, new_last;
    bookmarks before, after;
  };
  struct losses {
    std::vector<exchanged_lines> lines;
    folds touched;
    /// Those that the action has opened right before the change, and after it as the last change.
    opened_folds opened, opened_after;
    /// Those that taking the action back has closed again.
    opened_folds closed, closed_after;
    /// All folds before and after a replacement of many places.
    folding_filter::folding_set all_before, all_after;

    bool empty() const;
  };
  /// The later of the two states, and whether the step leads to it.
  using step = std::pair<uint32_t, bool>;

  static step step_between(unsigned long from, unsigned long to);
  bookmarks bookmarks_of(uint32_t first, uint32_t last) const;
  void set_bookmarks(uint32_t first, uint32_t last, bookmarks const& marks);
  void note_lines(uint32_t first, uint32_t last, uint32_t new_last);
  void close(folds const& opened);
  void close(opened_folds const& opened);
  void open_again(opened_folds const& closed);

  text::view& view_;
  std::map<step, losses> steps_;
  losses lost_;                        // by the present change
  losses returned_;                    // by taking back another
  opened_folds opened_;                // by the present action since its last change
  folds shown_;                        // opened to show the selection at `walked_to_`
  std::optional<uint32_t> walked_to_;  // the state to which undo or redo has led in this action
  bool walks_ = false;                 // the present change is one of undo or redo
  bool acts_ = false;                  // there is an action
  std::optional<step> made_;           // its last change
  bool replacing_ = false;
};

}  // namespace text
