#pragma once

#include "platform/graphics.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// Part of a text, half open, in units from its beginning; a line end is one unit.
struct unit_range {
  std::size_t first = 0, last = 0;
  friend bool operator==(unit_range const&, unit_range const&) = default;
};

/// How the units of a range look that are alike.
struct accessible_style {
  unit_range range;
  text_style text;
  color background;
  font letters;
};

/// Hears what happens to an accessible_text, when it has happened. Of an action that changes many
/// places, such as typing in columns, and of a very long text, only the first part is reported.
class accessible_text_observer {
 public:
  virtual void text_inserted(std::size_t at, std::u16string const& text) = 0;
  virtual void text_erased(std::size_t at, std::u16string const& text) = 0;
  /// Or the selection changed.
  virtual void caret_moved() = 0;

 protected:
  ~accessible_text_observer() = default;
};

/// A text as assistive programs read and edit it: by offsets in units, which may be any number and
/// are clamped to the text. What is folded is part of it. Nothing copies more than is asked for.
/// Main thread only.
class accessible_text {
 public:
  virtual ~accessible_text() = default;

  virtual std::size_t length() const = 0;
  virtual std::u16string text(unit_range range) = 0;
  virtual std::size_t caret() = 0;

  /// None without a selection, and one a line of a rectangle.
  virtual std::size_t selection_count() = 0;
  virtual unit_range selection(std::size_t index) = 0;
  /// The caret goes to the end, which may be the lesser one.
  virtual void select(std::size_t anchor, std::size_t caret) = 0;

  /// What the user sees as one character.
  virtual unit_range character_at(std::size_t offset) = 0;
  /// The row on the screen or, where nothing of it shows, the line; its end included.
  virtual unit_range row_at(std::size_t offset) = 0;
  /// The line with its end.
  virtual unit_range line_at(std::size_t offset) = 0;

  /// In coordinates of the view; empty for text that is folded.
  virtual rect rect_of(std::size_t offset) = 0;
  virtual std::size_t offset_at(point p) = 0;
  virtual accessible_style style_at(std::size_t offset) = 0;

  /// One step for undo.
  virtual void replace(unit_range range, std::u16string_view text) = 0;
  virtual void scroll_to(unit_range range) = 0;
};

}  // namespace platform
