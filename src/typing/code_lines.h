#pragma once

#include "styles/indent_patterns.h"
#include "text/views/view.h"

#include <chrono>
#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace typing {
class typed_view;

/// The patterns of the settings that were asked for last.
class recent_patterns {
 public:
  std::shared_ptr<styles::indent_patterns const> of(plist::value const& settings);

 private:
  std::list<std::shared_ptr<styles::indent_patterns const>> kept_;
};

/// A line with the columns that it is, or may be, indented by.
struct line_indent {
  std::size_t number, columns;
};

/// What the lines of a text view's document say about each other: which of them open and close
/// blocks, which brackets stay open in them, which continue others. Made for one look at a text of
/// which nothing changes meanwhile but the blanks that lines begin with: what was found is kept.
/// All walks end after a bounded number of lines. Lines count from 0, widths are in columns. A line
/// counts unless its type is `unindented`. Main thread only.
class code_lines {
 public:
  /// `patience` is how long a call may wait for scopes where the text is visible.
  code_lines(typed_view& text_view, recent_patterns& patterns, std::chrono::seconds patience);

  /// Before the other members are asked about a line.
  void wait_for_scopes(std::size_t line) const;

  text::storage& storage() const;
  std::size_t tab_size() const;
  /// Of the blanks that a line begins with, as they are now.
  std::size_t width_of(std::size_t number) const;
  plist::value settings_of_line(std::size_t number) const;
  std::shared_ptr<styles::indent_patterns const> patterns_of_line(std::size_t number);
  /// The bits of indent_patterns::type.
  unsigned type_of_line(std::size_t number);
  /// That of the last line of a statement; it also opens a block if it does so with the first one.
  unsigned type_of_statement(std::size_t first, std::size_t last);
  /// The nearest line above that counts, and isn't part of one that doesn't.
  std::optional<std::size_t> counting_line_above(std::size_t number);

  /// Comments and strings, as which the settings describe what is prose and isn't indented.
  bool is_in_prose(text::iterator const& at) const;
  /// The line up to a place, without the comment that it ends with.
  text::unit_view code_before(text::iterator const& place) const;

  struct bracket {
    std::size_t line, offset;  ///< units from the first text of the line
  };
  /// How many brackets a line closes that lines above have opened, and which it leaves open.
  struct brackets {
    std::size_t closed = 0, leading = 0;  ///< `leading`: of these, with nothing else before them
    std::vector<bracket> open;
  };
  brackets const& brackets_of(std::size_t number);
  /// The innermost but `inner` ones that is open where a line begins.
  std::optional<bracket> open_bracket_above(std::size_t number, std::size_t inner = 0);
  /// Whether a line ends with a bracket that it leaves open.
  bool ends_with_bracket(std::size_t number);

  /// The line in which the brackets begin that are closed in a line or in those that it continues.
  std::size_t first_line_of(std::size_t number);
  /// The first line of what a line surely continues: after an operator, and in a bracket that has
  /// text right after it or that opens no block.
  std::optional<std::size_t> line_continued_by(std::size_t number);
  /// The lines, from below, in which the statement may begin that a line ends.
  std::vector<std::size_t> beginnings_of(std::size_t number);
  /// Whether the statement continues after this line, where the language has patterns for that.
  bool is_unfinished(std::size_t number);
  /// The same of a line above another, without blank lines between them.
  bool may_continue(std::size_t above, std::size_t number);

 private:
  struct facts {
    std::optional<unsigned> type;
    std::optional<brackets> found;
    std::optional<bool> goes_on, unfinished;
  };
  bool is_bracket(text::iterator const& at) const;
  bool opens_blocks(bracket const& open);
  bool begins_with_bracket(std::size_t number);
  bool is_blank_between(std::size_t above, std::size_t number) const;
  std::optional<std::size_t> line_going_on_to(std::size_t number);
  bool goes_on_below(std::size_t number);
  bool find_going_on(std::size_t number);
  std::size_t line_of_brackets(std::size_t number);
  bool may_continue_above(std::size_t number);

  typed_view& text_view_;
  recent_patterns& patterns_;
  std::chrono::seconds patience_;
  std::unordered_map<std::size_t, facts> facts_;
};

}  // namespace typing
