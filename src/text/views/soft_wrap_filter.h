#pragma once

#include <vector>

#include "text/row_break.h"
#include "text/views/view.h"

namespace text {

/// Cuts each line of the filter below into rows no wider than the screen. All rows are held in a
/// table, so that questions are look-ups. An edit finds the rows again from the one before the
/// changed row, up to where they fall in with the old ones; those after are only shifted. Lines of
/// any length are thus typed in at the cost of a pass over the table at most.
///
/// Rows that continue a line begin in the column of its text, if the view wants that, but not
/// beyond the middle of the screen. A change among the blanks that a line begins with wraps all of
/// it.
///
/// The cluster between two rows of a line (the white space of a soft break, the one before a hard
/// break) belongs to neither. The position before it is the end of the upper row.
class view::soft_wrap_filter : public switchable_filter {
 public:
  using filter::did_insert;
  using filter::will_erase;

  /// A row: `first` and `last` bound it in units of `line`, a line of the filter below.
  struct line_range {
    uint32_t line;
    uint32_t first;
    uint32_t last;
  };
  using line_ranges = std::vector<line_range>;

  explicit soft_wrap_filter(text::view const& view) : view_(view) {}

  text::pos in_storage(text::pos const& at) const override;
  text::pos in_view(text::pos const& at) const override;
  text::iterator begin(unsigned long row) const override;
  text::iterator end(unsigned long row) const override;
  size_t size(unsigned long row) const override { return ranges[row].last - ranges[row].first; }
  size_t lines() const override { return ranges.size(); }
  /// The column at which a row begins.
  size_t indent_of_row(size_t row) const {
    return ranges[row].first == 0 ? 0 : indent_of(units_of(ranges[row].line));
  }

  void reset() override;
  void disable() override { line_ranges().swap(ranges); }

  /// The rows still are those of before the change, which the filters above may not ask about.
  void will_insert(text::iterator const&, int) override {}
  void did_insert(text::pos const& first, text::pos const& last) override;
  void will_erase(text::pos const& first, text::pos const& last) override;
  void did_erase(text::iterator const& pos, int length) override;

  text::pos erase_first;
  text::pos erase_last;
  size_t indent_before_erase = 0;  ///< of the first line erased from
  line_ranges ranges;              ///< by line, then `first`

 private:
  struct edit;
  struct wrapped_rows;

  unit_view units_of(size_t line) const;
  size_t indent_of(unit_view line, unit_view rest = {}) const;
  bool may_change_indent(text::pos const& at) const;
  size_t row_at(text::pos const& at) const;
  size_t end_of_line(size_t line) const;
  row_start start_of(size_t row) const;
  bool fits_the_text(edit const& made) const;
  bool moves_rows(edit const& made) const;
  size_t first_changed_cluster(text::pos const& first) const;

  static void add_row(size_t line, row_start start, size_t last, line_ranges& out);
  void wrap_line(size_t line, row_start start, line_ranges& out) const;
  wrapped_rows wrap_again(edit const& made, bool whole_lines) const;
  size_t wrap_up_to_old_rows(edit const& made, row_start start, line_ranges& out) const;
  bool keeps_layout(edit const& made, wrapped_rows const& fresh, size_t changed) const;
  bool keeps_first_row(edit const& made, wrapped_rows const& fresh) const;
  void replace_rows(edit const& made, wrapped_rows const& fresh);
  void apply(edit const& made);

  text::view const& view_;
};

}  // namespace text
