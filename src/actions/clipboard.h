#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "platform/pasteboard.h"
#include "text/views/view.h"

namespace actions {

/// Where a copied text began, in columns.
struct clip_origin {
  std::size_t indent = 0;     ///< of the line in which it began
  std::size_t column = 0;     ///< where it began; no more than `indent` if no text came before
  std::ptrdiff_t excess = 0;  ///< by how much it was indented more than its language expects
};

/// Text that was copied. Line ends are `\n`.
struct text_clip {
  std::u16string text;
  bool rectangular = false;           ///< the lines of a column selection, each with its line end
  std::optional<clip_origin> origin;  ///< unknown of what other programs have copied
};

/// What a pasteboard holds; nothing when that is no text. What surely has more units than `most`
/// is nothing too, at the cost of reading it: the conversion of a very large text takes seconds.
std::optional<text_clip> clip_of(platform::pasteboard_content const& content,
                                 std::size_t most = std::u16string::npos);
/// A clip for a pasteboard: as text, and as what this program puts back in the same shape.
plist::dictionary pasteboard_types_of(text_clip const& clip);

/// As long as one lives, what is copied stays with this program's own actions, which continue from
/// what the general pasteboard holds: a macro leaves that as it is, and its clips vanish from the
/// history. They nest.
class private_clipboard {
 public:
  private_clipboard();
  ~private_clipboard();
  private_clipboard(private_clipboard const&) = delete;
  private_clipboard& operator=(private_clipboard const&) = delete;

 private:
  struct former_state;
  std::unique_ptr<former_state> const former_;
};

/// What the general pasteboard holds.
std::optional<text_clip> current_clip();
/// Puts a clip on it, for other programs and for this one, and on the history's stack (see
/// WynPasteboardManager).
void set_current_clip(text_clip clip);

/// The selection. False, and the pasteboard stays, when nothing is selected.
bool view_copy(text::view* view);
/// Put the clip in place of the selection, with no change of indentation. False without a clip.
bool view_paste(text::view* view);
bool view_paste_next(text::view* view);
bool view_paste_previous(text::view* view);
/// The same for a given clip.
bool view_paste_clip(text::view* view, std::optional<text_clip> const& clip);
bool view_paste_without_reindent(text::view* view);
/// Inserts what was deleted last.
void view_yank(text::view* view);
/// Types one unit.
void view_insert(text::view* view, text::char_t unit);

}  // namespace actions
