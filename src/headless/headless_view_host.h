#pragma once

#include "platform/view.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace headless {

/// Remembers what it is to show.
class recorded_completions : public platform::completion_list {
 public:
  void show_rows(std::vector<platform::completion_row> shown, std::size_t row,
                 platform::rect const& at) override;
  void select_row(std::size_t row) override { selected = row; }
  void hide_rows() override { rows.clear(); }

  std::vector<platform::completion_row> rows;  // none while it is hidden
  std::size_t selected = 0;
  platform::rect word;
};

/// A view without a widget: 80 columns of 8 by 24 rows of 16 pixels are visible unless told
/// otherwise, and what the logic asks for is remembered.
class headless_view_host : public platform::view_host {
 public:
  /// Attaches itself.
  explicit headless_view_host(platform::view_client& client, std::uint32_t window_number = 0);
  ~headless_view_host() override;  // detaches itself

  platform::rect visible_rect() const override { return visible_; }
  bool is_seen() const override { return seen; }
  std::uint32_t window_number() const override { return window_number_; }
  void scroll_to(platform::point origin) override;
  void set_frame_size(platform::size s) override;
  void set_needs_display(platform::rect const& r) override;
  bool is_first_responder() const override { return focused; }
  bool is_window_key() const override { return focused; }
  platform::palette palette() const override;
  platform::font_metrics metrics_for(platform::font const& f) const override;
  void set_font(platform::font const&) override {}
  void hide_cursor_until_mouse_moves() override {}
  void reset_cursor() override {}
  void input_method_changed(bool abandon) override;
  void show_context_menu(std::vector<platform::menu_item> const& items,
                         platform::point where) override;
  std::optional<std::size_t> choose_from_menu(std::vector<platform::menu_item> const& items,
                                              std::optional<platform::point> where,
                                              double font_size) override;
  void begin_drag(plist::dictionary content, std::vector<platform::rect> const& shape,
                  platform::point at) override;
  platform::completion_list* completions() override { return &completion_list; }
  void show_tool_tip(platform::tool_tip const& tip) override;
  bool hide_tool_tip() override { return std::exchange(shows_tool_tip, false); }
  void interpret_key_event(platform::key_event const& event) override;

  void resize(platform::size visible);

  /// Input of the user: the client gets it when nothing waits.
  void send(std::function<void(platform::view_client&)> input);
  /// A key press; Escape cancels what waits.
  void send_key(platform::key_event const& event);

  bool focused = true, seen = true;
  platform::size frame_size;
  std::vector<platform::rect> dirty;  // what set_needs_display got
  int compositions_abandoned = 0;
  std::vector<platform::menu_item> context_menu;  // the last one shown
  std::vector<platform::menu_item> choice_menu;   // the last one shown
  std::string choice;                             // the key of the item that is chosen next, or ""
  plist::dictionary dragged;                      // the content of the last drag
  std::vector<platform::rect> dragged_shape;
  bool shows_tool_tip = false;
  std::u16string tool_tip;  // the text of the last one
  recorded_completions completion_list;

 private:
  std::uint32_t const window_number_;
  platform::view_client& client_;
  platform::rect visible_{0, 0, 640, 384};
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace headless
