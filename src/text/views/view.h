#pragma once

#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <vector>

#include "text/cell_width.h"
#include "text/iterator_observer.h"
#include "text/snippet_observer.h"
#include "text/storage.h"
#include "text/views/box.h"
#include "text/views/column_cache.h"
#include "text/views/filter.h"
#include "text/views/selection.h"
#include "text/views/view_iterator.h"

namespace text {

/// The state of a running completion; it is defined where completion lives.
class completion_helper;

/// A number that no other view of this process has.
unsigned long obtain_document_tag();

/// One way of looking at a storage: a selection, tab size and screen width, and a chain of filters
/// between the raw lines and what the screen shows. All editing by the user goes through here.
/// Several views may share a storage, which must outlive them.
///
/// Four kinds of coordinates meet here:
/// 1. storage coordinates: `text::iterator`, or `text::pos`: a line and a column in units;
/// 2. filtered coordinates: a `text::pos` as one filter of the chain sees it;
/// 3. view coordinates: a row of the top filter, and a visual column from that row's start, tabs
///    expanded: `line_in_view`, `column_in_view`, `iter_from_view_pos`;
/// 4. hybrid coordinates: a line of the storage, and a visual column from that line's start:
///    `line_before_filters`, `column_before_wrap`, `iter_from_hybrid_pos`.
///
///     text::view view(storage);
///     view.selection.set_caret(view.end());
///     view.insert(units.begin(), units.end());
///
/// Main thread only. Nothing is reported: an operation that doesn't apply has no effect.
class view {
 public:
  /// The order of the filters, from the storage upward.
  enum class filter_index { storage, tokenize, bookmark, spellcheck, folding, soft_wrap, view };

  /// The value of `max_columns` when it has to be computed.
  static constexpr unsigned unknown_columns = std::numeric_limits<unsigned>::max();

  /// The lowest filter, and the only one that the storage knows.
  class storage_filter;
  /// Keeps the bookmarks in step with the text.
  class bookmark_filter;
  /// Hides folded lines.
  class folding_filter;
  /// Cuts lines into rows that are no wider than the screen.
  class soft_wrap_filter;
  /// The highest one: keeps selections across undo, the range to draw again and `max_columns`.
  class view_filter;
  /// What changes have taken of bookmarks and folds, for undo and redo to bring back.
  class mark_history;

  explicit view(text::storage& storage);
  ~view();
  view(view const&) = delete;
  view& operator=(view const&) = delete;

  /// @name Rows, as the highest filter gives them
  /// @{
  size_t lines() const;
  size_t size(unsigned long line) const;
  view_iterator begin(unsigned long line) const;
  view_iterator end(unsigned long line) const;
  view_iterator end() const { return end(lines() - 1); }
  size_t line_in_view(view_iterator const& it) const;
  size_t column_in_view(view_iterator const& it) const;
  /// The column at which the text of a row begins: not 0 where it continues an indented line.
  size_t indent_of_row(size_t row) const;
  /// @}

  /// @name Widths in columns
  /// @{
  /// The character of a row that covers a visual column, counted from the row's start, or the row's
  /// end.
  unit_column unit_at_row_column(row_pos const& at) const;
  /// The columns from `first` up to `last`, the first unit standing at column `start`. Each cluster
  /// counts as many as it has cells, and a line end 1; a tab counts up to the next stop.
  size_t width_when_expanding_tabs(text::iterator const& first, text::iterator const& last,
                                   size_t start = 0) const;
  template <typename First, typename Last>
  size_t width_when_expanding_tabs(First first, Last last, size_t start = 0) const {
    return expanded_width(unit_run(first, last), start, tab_stops(tab_size));
  }
  /// The width of the widest of the rows from `first` up to, not including, `last`.
  size_t max_columns_for_range(size_t first, size_t last) const;
  /// The width of what the view shows: of the screen when lines are wrapped, else of the widest
  /// line.
  size_t columns() const;
  /// @}

  /// @name Settings
  /// Setters have no effect when the value is the present one.
  /// @{
  void set_tab_size(unsigned columns);  ///< not 0
  void set_screen_width(unsigned columns);
  void set_soft_wrap(bool on);
  void set_wraps_indented(bool on);
  void set_spellcheck_enabled(bool on);
  void set_treats_spaces_as_tabs(bool on) { treats_spaces_as_tabs = on; }
  void set_foldings_enabled(bool on);
  void set_freehanded_mode(bool on);  ///< keeps the caret's place on screen
  void set_column_mode(bool on);      ///< likewise, outside freehanded mode
  /// @}

  /// @name Filters and observers that come from higher floors
  /// A filter given here is owned by the view. It enters the chain at once, and leaves and enters
  /// it with the setting that switches it; without the filter a setting is only stored.
  /// @{
  void install_tokenize_filter(std::unique_ptr<filter> added);
  void install_spellcheck_filter(std::unique_ptr<switchable_filter> added);
  /// Null for none. It is notified after all other observers of this view.
  void set_snippet_observer(std::unique_ptr<snippet_observer_t> observer);
  void chain_filters();
  /// @}

  /// Measures again if the way of counting cells (text/cell_width.h) is another one than it was,
  /// and says whether.
  bool follow_cell_widths();

  /// @name Folded text
  /// @{
  bool is_visible(text::iterator const& it) const;
  /// Unfolds what hides the position; the selection stays.
  void make_visible(text::iterator const& it);
  /// The same for caret and selection.
  void show_selection();
  /// The same for the lines from `first` up to, not including, `last`. Whether any was hidden.
  bool make_lines_visible(size_t first, size_t last);
  /// Unfolds what hides the position and gives it as one of this view. The selection stays, so that
  /// a call may be used in the argument of a setter.
  view_iterator in_view(text::iterator const& it, bool flag = true);
  /// @}

  /// @name Bookmarks
  /// In storage coordinates, at most one a line.
  /// @{
  /// A bookmark that the line has already stays where it is.
  void set_bookmark(text::pos const& at, bool set);
  void toggle_bookmark(text::pos const& at);
  bool has_bookmark(size_t line) const;
  /// The nearest one on another line, going round at the end of the text. With a single bookmark
  /// it is that one; without any it is column 0 of `line`.
  text::pos next_bookmark(size_t line) const;
  text::pos previous_bookmark(size_t line) const;
  /// @}

  /// @name Editing
  /// Sequences are given as to `storage::insert`; they must not be units of the storage itself,
  /// except as text iterators.
  /// @{
  bool has_selection() const { return !selection.empty(); }
  bool is_in_column_mode() const { return selection.column_mode; }

  /// Types or pastes at the selection, which it replaces. In a column selection what is typed goes
  /// to all of its lines.
  template <typename First, typename Last>
  void insert(First first, Last last) {
    insert_units(unit_run(first, last));
  }
  /// Replaces the selection and selects the result.
  template <typename First, typename Last>
  void replace_selection(First first, Last last) {
    replace_selection_with(unit_run(first, last));
  }
  /// Puts the lines of a sequence in a rectangle of at least the size `least`, whose corner is the
  /// caret, adding lines to the text where needed. Selects the rectangle if `select`.
  template <typename First, typename Last>
  void insert_column(First first, Last last, rectangle_size least, bool select) {
    insert_column_of(unit_run(first, last), least, select);
  }
  /// Takes text away, or blanks its cells in overwrite mode, and fills up what a cut tab leaves.
  view_iterator erase(view_iterator first, view_iterator last);
  /// Puts the caret where the selection was, and returns it. Where what stood before it and after
  /// it is one character now, such as a letter with its accent, the caret goes after that.
  view_iterator erase_selection();
  /// Drag and drop inside the view.
  void move_selection_to(view_iterator to);

  bool can_enter_line_append_mode() const;
  /// Repeats what is typed at the end of the selection's first line at the end of its other lines.
  void enter_line_append_mode();

  /// Brackets what the user does by one action: what is typed in columns and which pairs are live
  /// is then kept for undo and redo as it stands before and after the action. Actions don't nest.
  void will_begin_action();
  void did_end_action();

  bool can_undo() const { return storage->undo_manager.can_undo(); }
  bool can_redo() const { return storage->undo_manager.can_redo(); }
  /// @}

  /// Asks for the rows from `first` up to `last` to be drawn again.
  void refresh_lines(size_t first, size_t last);

  text::storage* storage;
  text::iterator_observer mirror_observer;  ///< column typing and line append mode
  text::iterator_observer notify_observer;  ///< pairs that smart typing has inserted
  std::unique_ptr<text::snippet_observer_t> snippet_observer;
  text::selection selection;
  text::selection saved_selection;  ///< as it stood before the present action of the user
  uint32_t first_refresh_line = std::numeric_limits<uint32_t>::max();
  uint32_t last_refresh_line = 0;
  unsigned tab_size = 3;
  unsigned screen_width = 78;
  mutable unsigned max_columns = unknown_columns;  ///< width of the widest line
  bool freehanded_mode = false;
  bool overwrite_mode = false;
  bool soft_wrap = false;
  bool wraps_indented = false;  ///< rows that continue a line begin below its text
  bool foldings_enabled = true;
  bool spellcheck_enabled = false;
  bool treats_spaces_as_tabs = false;
  bool saved_selection_pending = false;
  bool center_selection_pending = false;  ///< asked for at the end of the present action
  bool scroll_caret_pending = false;
  /// Where the screen began when the view was last shown; -1 asks to bring the caret in sight.
  std::ptrdiff_t first_visible_line = -1;
  size_t first_visible_column = 0;
  unsigned long document_tag = obtain_document_tag();
  std::unique_ptr<class mark_history> mark_history;
  std::unique_ptr<class storage_filter> storage_filter;
  std::unique_ptr<filter> tokenize_filter;
  std::unique_ptr<class bookmark_filter> bookmark_filter;
  std::unique_ptr<switchable_filter> spellcheck_filter;
  std::unique_ptr<class folding_filter> folding_filter;
  std::unique_ptr<class soft_wrap_filter> soft_wrap_filter;
  std::unique_ptr<class view_filter> view_filter;
  std::map<filter_index, filter*> filters;  ///< those in the chain
  std::shared_ptr<text::completion_helper> completion_helper;

  /// For conversions of columns in long lines; looked up by the coordinate functions.
  column_cache& long_lines() const { return long_lines_; }

 private:
  class tab_stop_anchor;

  filter& top() const { return *filters.rbegin()->second; }
  void enter(filter_index index, filter* added);
  void switch_filter(filter_index index, switchable_filter* switched, bool on);
  bool is_whole_line(view_iterator const& first, view_iterator const& last) const;
  size_t row_width(size_t row) const;
  void raise_max_columns(size_t width) const;
  bool knows_max_columns() const;
  /// Returns what was known until now.
  unsigned forget_max_columns();

  void take_selection();
  void insert_units(unit_view units);
  void replace_selection_with(unit_view units);
  void replace_columns_with(unit_view units);
  void insert_column_of(unit_view units, rectangle_size least, bool select);
  /// Fills the piece up to so many columns.
  void insert_piece(hybrid_pos const& at, unit_view piece, size_t columns);
  void add_column_mirrors(text::iterator const& base, size_t count);
  text::iterator erase_selection_keeping(text::iterator const& it);
  bool is_snippet_running() const;
  bool is_in_tab_stop(text::iterator const& it) const;
  void keep_caret_place(freehanded_t::type type);

  bool units_were_cells_ = counts_units_as_cells();
  mutable column_cache long_lines_;
  /// The width that the widest line has grown to while it was typed in. Takes the place of a
  /// `max_columns` that was forgotten for it, so that typing there doesn't measure all lines.
  mutable unsigned grown_columns_ = unknown_columns;
};

}  // namespace text
