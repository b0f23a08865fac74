#pragma once

#include <algorithm>
#include <boost/container/flat_set.hpp>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "regex/oniguruma.h"
#include "text/views/view.h"

namespace text {

/// Hides runs of lines. What can be folded is determined by two patterns, for lines that open a
/// block and lines that close one, and by the lines' indentation: a start pairs with the next stop
/// of the same indent that closes the same kind of bracket, or none. A start on a continued line
/// ("    : member_(1) {") pairs with a stop that is indented less. With set_indent_folding() a line
/// also begins a block if the next one is indented more. The filters below change no lines, so
/// lines are those of the storage.
///
/// The user's folds are kept with the text that they hide, whatever happens around them. A change
/// that crosses the border of a fold unfolds it first.
class view::folding_filter : public switchable_filter {
 public:
  using filter::did_insert;
  using filter::will_erase;
  using pattern = std::unique_ptr<oniguruma::ptrn_t>;

  /// `start` and `stop` are what a line says, `folded` that a fold begins on it.
  enum class line_type : uint8_t { start, stop, folded, none };

  struct marker_t {
    uint32_t line;
    line_type type;  ///< start or stop
    size_t indent;   ///< in columns
  };

  /// Hides the lines after `first` up to `last`, which it includes.
  struct folding_t {
    uint32_t first, last;
    auto operator<=>(folding_t const&) const = default;
  };

  /// In one piece of memory: all after a line move with it.
  using folding_set = boost::container::flat_set<folding_t>;

  explicit folding_filter(text::view& view);
  ~folding_filter() override;

  /// Null patterns turn folding off for lines not folded yet; patterns equal to those before change
  /// nothing.
  void set_patterns(pattern start, pattern stop);
  bool has_patterns() const { return begin_pattern && end_pattern; }
  /// Blocks are also those that indentation makes. Blank lines don't count, nor do those that the
  /// pattern matches; null turns it off. A block that ends with one that is folded unfolds that
  /// when it is folded itself.
  void set_indent_folding(pattern ignored);
  void reset() override;
  void disable() override { reset(); }
  /// Forgets what lines say and how far they are indented, but no fold.
  void forget_markers() {
    marks_.clear();
    depths_.clear();
    forget_pairs();
  }

  /// What the patterns say of a line: a start, a stop, or neither.
  line_type parse_line(size_t line) const;
  /// A stop without a start counts as none.
  line_type folding_type(size_t line);
  /// What a click can do something with: as folding_type(), but a start whose stop isn't to come
  /// counts as none, too.
  line_type mark_of(size_t line);

  /// @name Folding
  /// These set the caret at the end of the first line of what was folded or unfolded; they return
  /// whether anything was.
  /// @{
  /// Folds the innermost block that begins at or before `line` and ends at or after it; with
  /// `nested` also the blocks inside.
  bool fold_if_possible(size_t line, bool nested);
  /// Unfolds what begins on `line`; with `nested` also the folds inside.
  bool unfold_if_possible(size_t line, bool nested);
  bool toggle_folding(size_t line, bool nested);
  /// Folds lines that no pattern speaks of. False when that would cross another fold.
  bool fold_lines(size_t first, size_t last);
  /// @}

  /// @name All blocks of one depth of nesting, from 1; 0 stands for those of any depth
  /// Marks of the selection move out of what is hidden. They return whether anything changed.
  /// @{
  bool fold_level(size_t level);
  bool unfold_level(size_t level);
  /// Of the block that begins or ends on `line`; 0 without one.
  size_t level_of(size_t line) const;
  /// @}

  bool is_folded(size_t line) const;
  bool can_fold(size_t line) const { return block_around(line).has_value(); }

  bool is_visible(text::pos const& at) const;
  /// Unfolds all that hides a position, outer folds included.
  void make_visible(text::pos const& at);
  /// Unfolds all that hides one of the lines from `first` up to, not including, `last`; whether
  /// anything did. The caret goes somewhere.
  bool make_lines_visible(size_t first, size_t last);

  /// Folds lines again that were, where that is still possible. The caller sets the caret.
  void fold_again(std::vector<folding_t> const& folds);
  /// Opens those folds that there still are. Likewise.
  void open_again(std::vector<folding_t> const& folds);
  /// Takes folds that were kept with a file; those that don't fit the text or each other are left.
  void restore(std::vector<folding_t> const& kept);
  /// Puts all folds back as they were for the same text.
  void restore_all(folding_set folds);

  /// The lines that rows show, from `first` up to `last`, as stretches: `visit(line, line_after)`.
  template <typename Visit>
  void visit_lines_of_rows(size_t first, size_t last, Visit visit) const {
    size_t line = in_storage({first, 0}).line;
    for (auto fold = fold_at_or_after(line); first < last; ++fold) {
      bool const is_last = fold == outer_.end();
      size_t const stop =
          is_last ? line + last - first : std::min(line + last - first, fold->first + size_t{1});
      visit(line, stop);
      if (is_last) return;
      first += stop - line;
      line = fold->last + size_t{1};
    }
  }

  text::pos in_storage(text::pos const& at) const override;
  text::pos in_view(text::pos const& at) const override;

  void did_insert(text::pos const& first, text::pos const& last) override;
  void will_erase(text::pos const& first, text::pos const& last) override;
  void did_erase(text::iterator const& pos, int length) override;
  void will_replace(text::replacement const& what) override;
  void did_replace(text::replacement const& what) override;

  pattern begin_pattern, end_pattern, ignored_pattern;
  folding_set foldings;
  /// A fold as it was before a change, and after it; none if the change has opened it.
  struct touched_fold {
    folding_t was;
    std::optional<folding_t> now;
  };
  /// Those that changes have opened since this was emptied, or that taking the change back
  /// would open.
  std::vector<touched_fold> touched;

 private:
  /// What a line says, in four bytes, since a long text has many lines.
  struct mark {
    bool is_known : 1 = false;
    bool is_continued : 1 = false;  ///< it doesn't begin a statement
    bool leaves_open : 1 = false;   ///< the next line continues it
    line_type type : 2 = line_type::none;
    uint32_t kind : 2 = 0;  ///< of the bracket that a start ends with, or a stop begins with
    /// Those that it leaves open, or less than none where it closes more than it opens; without
    /// that of a start or stop.
    int32_t braces : 5 = 0;
    uint32_t indent : 20 = 0;  ///< in columns

    bool operator==(mark const&) const = default;
  };
  static_assert(sizeof(mark) == 4);

  /// A line that opens something, or closes it.
  struct opening {
    size_t line;
    size_t indent;
    uint32_t kind;      ///< of its bracket; 0 for none
    bool is_continued;  ///< its indent may be more than that of the line that closes it
    bool is_block;      ///< else just brackets that are open at its end
  };
  class nesting;
  struct indented;

  /// A fold that no other one hides.
  struct outer_fold {
    uint32_t first, last;
    uint32_t hidden;  ///< lines hidden by this one and those before
  };

  struct block {
    folding_t lines;
    size_t level;  ///< from 1: how many blocks it is in, itself included
  };

  /// A line that is the first or last one of a fold.
  struct border {
    uint32_t line;
    bool is_last;
  };

  unit_view units_of(size_t line) const { return view_.storage->line_units(line); }
  text::pos end_of(size_t line) const { return {line, units_of(line).size()}; }
  mark mark_at(size_t line) const;
  mark parsed(size_t line) const;
  static bool says_something(mark const& known);
  std::optional<marker_t> marker(size_t line) const;
  opening opening_at(size_t line) const;
  /// The start of the block that `line` closes.
  std::optional<opening> step(nesting& open, size_t line) const;
  size_t depth(size_t line) const;
  bool closes_bracket(size_t line) const;
  bool begins_indented(size_t line) const;
  bool hides_indentation(size_t line) const;
  size_t end_of_indented(size_t line) const;
  std::optional<folding_t> indented_around(size_t line) const;
  void add_indented(size_t first, size_t last, std::vector<block>& blocks) const;
  void unfold_those_ending_with(folding_t const& fold);
  std::vector<border>::const_iterator border_at_or_after(size_t line) const;
  bool is_end_of_fold(size_t line) const;
  /// Finds the stops up to `line` that have a start.
  void pair_marks(size_t line) const;
  void forget_pairs() const { paired_ = 0; }
  void forget_survey() {
    surveyed_ = false;
    forget_pairs();  // the lines at the ends of folds pair with none
  }
  /// The line of the stop of a start, looked for in the lines before `end`; `is_open` is set if
  /// there may be one after them.
  std::optional<size_t> stop_of(size_t start, size_t end, bool& is_open) const;
  bool may_have_stop(size_t start) const;
  std::optional<folding_t> marked_around(size_t line) const;
  std::optional<folding_t> block_around(size_t line) const;
  std::vector<block> blocks(size_t first, size_t last) const;
  bool crosses_a_fold(folding_t const& fold) const;
  bool fold(folding_t const& fold);
  bool add_folds(std::vector<block> const& blocks, size_t level);
  void unfold(std::vector<folding_t> const& folds);
  void erase_folds(std::vector<folding_t> const& folds);
  template <typename Crossed>
  void unfold_where(Crossed crossed);
  void move_folds(uint32_t from, uint32_t by);
  void forget_marks(size_t line, size_t lines_after, size_t added);
  void put_caret_at_end_of(size_t line);
  void lay_out_again();
  void survey_folds() const;
  std::vector<outer_fold> const& outer_folds() const;
  std::vector<outer_fold>::const_iterator fold_at_or_after(size_t line) const;
  template <typename IsAbove>
  outer_fold const* last_fold(size_t& near, IsAbove is_above) const;
  outer_fold const* last_fold_above(size_t line) const;

  text::view& view_;
  mutable std::vector<mark> marks_;       ///< by line; empty when nothing is known
  mutable std::vector<uint32_t> depths_;  ///< likewise; see depth()
  /// @name Of the lines before `paired_`
  /// Typing mostly leaves what a line says of folding as it was, and then these stand.
  /// @{
  mutable size_t paired_ = 0;
  mutable std::vector<bool> has_start_;    ///< of stops
  mutable std::unique_ptr<nesting> open_;  ///< at the end of these lines
  /// @}
  mutable std::vector<outer_fold> outer_;
  mutable std::vector<border> borders_;  ///< of all folds, by line, at most one a line
  mutable bool surveyed_ = true;         ///< whether these two are those of `foldings`
  mutable size_t near_line_ = 0, near_row_ = 0;
  text::pos erase_first_, erase_last_;
  folding_set kept_;  ///< what `foldings` will be when a replacement is done
};

}  // namespace text
