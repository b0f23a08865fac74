#pragma once

#include "actions/clipboard.h"
#include "styles/indent_patterns.h"
#include "text/views/view.h"
#include "typing/code_lines.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace typing {
class kept_indents;
class typed_view;

/// How far the lines of a text view are indented: new ones, those that what is typed makes the end
/// of a block, those that are pasted, and those that the user asks for. The view must show a
/// document, inside of a view_will_change scope. Lines count from 0, widths in columns. Owned by
/// the view; main thread only.
class line_indenter {
 public:
  explicit line_indenter(typed_view& text_view);

  void insert_newline();
  /// Puts the selection on the pasteboard, with what is needed to paste it back as it was; false if
  /// there is none.
  bool copy();
  /// Puts in a clip, several lines indented as fits the caret; false if there is none.
  bool paste(std::optional<actions::text_clip> const& clip);
  /// As the language says; but a line keeps what the lines before it allow, see kept_indents, and
  /// where indentation alone ends a block, what ends some blocks. Text over several lines stays.
  void indent_selected_lines();

  /// Whether the caret stands at a line's end, where what is typed is looked at.
  bool types_at_line_end() const;
  /// Whether what is typed next, at the line's end, may make it one that closes a block.
  bool may_close_block();
  /// After so many units have been typed that may.
  void indent_closing_line(std::size_t typed);

 private:
  std::ptrdiff_t excess_of(std::u16string const& lines_text, std::size_t line);
  text::view& view() const;
  std::size_t tab_size() const;
  std::shared_ptr<styles::indent_patterns const> language_patterns();
  std::size_t wanted_indent(code_lines& lines, styles::indent_patterns const& patterns,
                            text::unit_view content, std::size_t number);
  bool indents_by_spaces(std::size_t number) const;
  bool may_end_blocks(code_lines& lines, line_indent proposed);
  std::size_t own_or_wanted_indent(code_lines& lines, kept_indents& kept, std::size_t number);

  void set_indent(line_indent wanted);
  std::u16string taken_indent(std::size_t number) const;
  std::u16string fitted(actions::text_clip const& clip);
  std::u16string fitted_to_line(actions::text_clip const& clip, std::size_t level);
  std::u16string shifted(std::u16string const& clip, std::ptrdiff_t by) const;

  typed_view& text_view_;
  recent_patterns patterns_;
};

}  // namespace typing
