#include "textview/mouse/drop_target.h"

#include "actions/clipboard.h"
#include "layout/geometry.h"
#include "platform/desktop.h"
#include "text/views/view.h"
#include "textview/mouse/dropped_content.h"

namespace textview {

namespace type = platform::pasteboard_type;
namespace modifier = platform::modifier;
namespace operation = platform::drag_operation;

using platform::drag_info;
using platform::point;
using platform::rect;

namespace {

constexpr double scroll_period = 0.05;  // seconds

std::u16string_view units_of(std::vector<char16_t> const& text) {
  return {text.data(), text.size()};
}

}  // namespace

drop_target::drop_target(pointed_view& text_view) : text_view_(text_view) {}

std::uint32_t drop_target::operation_for(drag_info const& info) const {
  if (text_view_.view() == nullptr || text_view_.host() == nullptr || text_view_.isRecordingMacro())
    return operation::none;
  bool const can_copy = info.operations & operation::copy;
  std::uint32_t const generic = info.operations & operation::generic;
  if (!info.is_from_this_view) return can_copy ? operation::copy : generic;
  if (layout::is_in_selection(text_view_, info.position)) return operation::none;
  if (generic != 0) return generic;
  return can_copy ? operation::copy : operation::none;
}

std::uint32_t drop_target::update(drag_info const& info) {
  redraw_caret();
  std::uint32_t const possible = operation_for(info);
  shows_caret_ = possible != operation::none;
  set_position(info.position);
  if (scroll_timer_ == nullptr && text_view_.host() != nullptr)
    scroll_timer_ = platform::desktop::current().loop().schedule(scroll_period, true,
                                                                 [this] { scroll_towards_edge(); });
  return possible;
}

void drop_target::exit() {
  if (!in_visible_) return;
  redraw_caret();
  in_visible_.reset();
  scroll_timer_.reset();
}

// Kept from the corner of what is visible, since the text scrolls under it.
void drop_target::set_position(point p) {
  redraw_caret();
  rect const visible = layout::visible_rect_of(text_view_);
  in_visible_ = point{p.x - visible.x, p.y - visible.y};
  redraw_caret();
}

void drop_target::redraw_caret() {
  if (auto const shown = caret())
    text_view_.host()->set_needs_display(shown->intersection(text_view_.host()->visible_rect()));
}

std::optional<rect> drop_target::caret() const {
  if (!in_visible_ || !shows_caret_ || text_view_.view() == nullptr || text_view_.host() == nullptr)
    return std::nullopt;
  rect const visible = text_view_.host()->visible_rect();
  point const p{in_visible_->x + visible.x, in_visible_->y + visible.y};
  point const at = layout::position_of(
      text_view_, layout::position_at(text_view_, p, text::freehanded_t::automatic));
  return rect{at.x, at.y, 1, text_view_.layout().lineHeight()};
}

// Near the edge the text moves, so that places out of sight can be reached.
void drop_target::scroll_towards_edge() {
  if (text_view_.host() == nullptr || text_view_.view() == nullptr || !in_visible_) return;
  rect const whole = text_view_.host()->visible_rect();
  double const edge = text_view_.layout().lineHeight();
  point const by = layout::distance_beyond(text_view_.visibleTextRect().inset(edge, edge),
                                           {in_visible_->x + whole.x, in_visible_->y + whole.y});
  if (by == point{}) return;
  redraw_caret();
  text_view_.host()->scroll_to({whole.x + by.x, whole.y + by.y});
  redraw_caret();
}

// By the order of what is tried first, a drop of this program keeps its columns, and a file that
// comes with its name as text is a file.
bool drop_target::perform(drag_info const& info) {
  std::uint32_t const wanted = operation_for(info);
  exit();
  if (wanted == operation::none) return false;
  text::view_iterator const to =
      layout::position_at(text_view_, info.position, text::freehanded_t::automatic);
  if (info.content.get(type::quirnote)["Content"].as_string())
    return drop_text(info, to, wanted == operation::generic);
  if (plist::value const files = info.content.get(type::file_list); !files.elements().empty()) {
    drop_files(files, to, info.modifiers);
    return true;
  }
  if (plist::value const color = info.content.get(type::color); color.as_array())
    return insert(dropped_content::text_of_color(color), to);
  return drop_text(info, to, wanted == operation::generic);
}

bool drop_target::drop_text(drag_info const& info, text::view_iterator const& to, bool move) {
  auto const clip = actions::clip_of(info.content);
  if (!clip) return false;
  text_view_.change([&] {
    text::view& view = *text_view_.view();
    // The text may have changed under a drag, so that something else is selected by now.
    if (move && info.is_from_this_view && view.selection.units() == clip->text) {
      view.move_selection_to(to);
    } else if (clip->rectangular) {
      view.selection.set_caret(to);
      view.insert_column(clip->text.begin(), clip->text.end(), {}, true);
    } else {
      view.selection.set_caret(to);
      view.replace_selection(clip->text.begin(), clip->text.end());
    }
  });
  return true;
}

bool drop_target::insert(std::u16string_view text, text::view_iterator const& to) {
  if (text.empty()) return false;
  text_view_.change([&] {
    text_view_.view()->selection.set_caret(to);
    text_view_.view()->insert(text.begin(), text.end());
  });
  return true;
}

// Questions may come up. The program that the files come from waits for the end of the drop, so
// they are asked after it; the caret keeps the place.
void drop_target::drop_files(plist::value const& files, text::view_iterator const& to,
                             std::uint32_t modifiers) {
  text_view_.change([&] { text_view_.view()->selection.set_caret(to); });
  std::vector<std::string> paths;
  for (plist::value const& path : files.elements()) paths.push_back(path.string_or(""));
  files_timer_ = platform::desktop::current().loop().schedule(
      0, false, [this, paths, modifiers] { take_files(paths, modifiers); });
}

// What no command takes is inserted.
void drop_target::take_files(std::vector<std::string> paths, std::uint32_t modifiers) {
  bool const as_paths = modifiers & (modifier::control | modifier::shift | modifier::option);
  if (!(modifiers & modifier::control))
    std::erase_if(paths, [&](std::string const& path) {
      return text_view_.view() != nullptr && !dropped_content::is_folder(path) &&
             text_view_.dropFile(path, modifiers);
    });
  auto const text = dropped_content::text_of_files(paths, as_paths);
  if (text_view_.view() != nullptr)
    insert(units_of(text), text_view_.view()->selection.current_mark);
}

}  // namespace textview
