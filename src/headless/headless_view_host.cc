#include "headless/headless_view_host.h"

#include "platform/desktop.h"

#include <algorithm>

namespace headless {

void recorded_completions::show_rows(std::vector<platform::completion_row> shown, std::size_t row,
                                     platform::rect const& at) {
  rows = std::move(shown);
  selected = row;
  word = at;
}

headless_view_host::headless_view_host(platform::view_client& client, std::uint32_t window_number)
    : window_number_(window_number), client_(client) {
  client_.set_host(this);
}

headless_view_host::~headless_view_host() {
  client_.set_host(nullptr);
}

void headless_view_host::scroll_to(platform::point origin) {
  double const max_x = std::max(0.0, frame_size.width - visible_.width);
  double const max_y = std::max(0.0, frame_size.height - visible_.height);
  platform::rect const old = visible_;
  visible_.x = std::clamp(origin.x, 0.0, max_x);
  visible_.y = std::clamp(origin.y, 0.0, max_y);
  if (!(visible_ == old)) client_.visible_rect_changed();
}

void headless_view_host::set_frame_size(platform::size s) {
  frame_size = s;
  scroll_to({visible_.x, visible_.y});
}

void headless_view_host::set_needs_display(platform::rect const& r) {
  if (seen && !r.empty()) dirty.push_back(r);
}

platform::palette headless_view_host::palette() const {
  return {{0, 0, 0}, {255, 255, 255}, {180, 210, 255}, {0, 0, 0}, false};
}

platform::font_metrics headless_view_host::metrics_for(platform::font const& f) const {
  double const scale = f.point_size / 12;
  return {11 * scale, -3 * scale, 8 * scale};
}

void headless_view_host::input_method_changed(bool abandon) {
  if (abandon) ++compositions_abandoned;
}

void headless_view_host::show_context_menu(std::vector<platform::menu_item> const& items,
                                           platform::point) {
  context_menu = items;
}

std::optional<std::size_t> headless_view_host::choose_from_menu(
    std::vector<platform::menu_item> const& items, std::optional<platform::point>, double) {
  choice_menu = items;
  std::string const wanted = std::exchange(choice, "");
  for (std::size_t number = 0; number < items.size(); ++number)
    if (!wanted.empty() && items[number].key == wanted) return number;
  return std::nullopt;
}

// Where it goes is for the test to say, by the client's dragging_updated() and the calls after it.
void headless_view_host::begin_drag(plist::dictionary content,
                                    std::vector<platform::rect> const& shape, platform::point) {
  dragged = std::move(content);
  dragged_shape = shape;
}

void headless_view_host::interpret_key_event(platform::key_event const& event) {
  bool const is_text =
      (event.modifiers & (platform::modifier::command | platform::modifier::control)) == 0 &&
      !event.characters.empty() && event.characters[0] >= 0x20 && event.characters[0] != 0x7F &&
      (event.characters[0] < 0xF700 || event.characters[0] > 0xF8FF);
  if (is_text) client_.insert_text(event.characters);
}

void headless_view_host::send(std::function<void(platform::view_client&)> input) {
  platform::desktop::current().waits().deliver_input(
      lives_, [this, input = std::move(input)] { input(client_); });
}

void headless_view_host::send_key(platform::key_event const& event) {
  bool const is_escape = event.characters == std::u16string(1, platform::function_key::escape);
  auto& waits = platform::desktop::current().waits();
  if (is_escape && waits.escape()) return;
  bool const is_interrupt =
      event.characters == u"c" && event.modifiers == platform::modifier::command;
  if (is_interrupt && waits.interrupt()) return;
  if (!waits.is_waiting()) waits.did_type();
  send([event](platform::view_client& client) { client.key_down(event); });
}

void headless_view_host::show_tool_tip(platform::tool_tip const& tip) {
  shows_tool_tip = true;
  tool_tip = tip.text;
}

void headless_view_host::resize(platform::size visible) {
  visible_.width = visible.width;
  visible_.height = visible.height;
  client_.visible_rect_changed();
}

}  // namespace headless
