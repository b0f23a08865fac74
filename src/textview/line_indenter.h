#pragma once

#include "text/view.h"
#include "textview/indent_patterns.h"

#include <cstddef>
#include <optional>
#include <string>

class WynTextView;

/// How far the lines of a text view are indented: new ones, those that what is typed makes the end
/// of a block, those that are pasted, and those that the user asks for. The view must show a
/// document, inside of a view_will_change scope. Lines count from 0, widths in columns. Owned by
/// the view; main thread only.
class line_indenter {
 public:
  explicit line_indenter(WynTextView& text_view);

  void insert_newline();
  /// Puts in what would be pasted, several lines indented as fits the caret; false if there is
  /// nothing.
  bool paste();
  void indent_selected_lines();

  /// Whether the caret stands at a line's end, where what is typed is looked at.
  bool types_at_line_end() const;
  /// Whether what is typed next, at the line's end, may make it one that closes a block.
  bool may_close_block();
  /// After so many units have been typed that may.
  void indent_closing_line(std::size_t typed);

 private:
  text::view& view() const;
  std::size_t tab_size() const;
  indent_patterns const& language_patterns();
  std::size_t wanted_indent(text::unit_view content, std::size_t number);
  bool indents_by_spaces(std::size_t number) const;
  void indent_line(std::size_t number);
  std::u16string taken_indent(std::size_t number) const;
  std::u16string fitted(std::u16string const& clip);

  WynTextView& text_view_;
  std::optional<indent_patterns> patterns_;  ///< of the language that was at the caret last
};
