#pragma once

#include <optional>
#include <string>

#include "platform/pasteboard.h"
#include "text/view.h"

/// Text that was copied. Line ends are `\n`.
struct text_clip {
  std::u16string text;
  bool rectangular = false;  ///< the lines of a column selection, each with its line end
};

/// What a pasteboard holds; nothing when that is no text.
std::optional<text_clip> clip_of(platform::pasteboard_content const& content);
/// A clip for a pasteboard: as text, and as what this program puts back in the same shape.
plist::dictionary pasteboard_types_of(text_clip const& clip);

/// What the general pasteboard holds.
std::optional<text_clip> current_clip();
/// Puts a clip on it, for other programs and for this one.
void set_current_clip(text_clip const& clip);

/// The selection. False, and the pasteboard stays, when nothing is selected.
bool view_copy(text::view* view);
/// Put the clip in place of the selection, with no change of indentation. False without a clip.
bool view_paste(text::view* view);
bool view_paste_without_reindent(text::view* view);
/// Inserts what was deleted last.
void view_yank(text::view* view);
/// Types one unit.
void view_insert(text::view* view, text::char_t unit);
