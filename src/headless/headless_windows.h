#pragma once

#include "headless/headless_view_host.h"
#include "platform/html_window.h"
#include "platform/tree/side_bar.h"
#include "platform/tree/tree_panel.h"
#include "platform/window.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace headless {

/// The windows on screen, front to back.
class window_order {
 public:
  std::vector<platform::window*> const& front_to_back() const { return windows_; }
  void bring_to_front(platform::window& window);
  void remove(platform::window& window) { std::erase(windows_, &window); }
  bool is_key(platform::window const& window) const {
    return !windows_.empty() && windows_.front() == &window;
  }

 private:
  std::vector<platform::window*> windows_;
};

/// What windows of either Kind, a platform::editor_window or platform::html_window, remember.
template <class Kind>
class recorded_window : public Kind {
 public:
  recorded_window(window_order& order, platform::window_delegate& delegate,
                  platform::responder& first)
      : order_(order), delegate_(delegate), first_(first) {}
  ~recorded_window() override { order_.remove(*this); }

  void set_title(std::string const& t) override { title = t; }
  void set_represented_filename(std::string const& path) override { filename = path; }
  void set_document_edited(bool e) override { edited = e; }
  void make_key_and_order_front() override {
    bool const was_key = is_key();
    visible = true;
    order_.bring_to_front(*this);
    if (!was_key) delegate_.windowDidBecomeKey();
  }
  void close() override {
    visible = false;
    order_.remove(*this);
    delegate_.windowWillClose();  // may end this object
  }
  bool is_visible() const override { return visible; }
  bool is_miniaturized() const override { return false; }
  void deminiaturize() override {}
  bool is_full_screen() const override { return full_screen; }
  void toggle_full_screen() override { full_screen = !full_screen; }
  void open_menu_bar() override { ++menu_openings; }
  void enter_status_bar() override { ++status_bar_entries; }
  bool is_key() const override { return order_.is_key(*this); }
  std::string placement() const override { return place; }
  void set_placement(std::string const& p) override { place = p; }
  void set_offers(std::vector<platform::menu_item> const& items) override { offers = items; }
  platform::responder* first_responder() const override { return &first_; }
  platform::window_delegate* delegate() const override { return &delegate_; }
  void update_value(std::string_view key, plist::value const& value) override {
    values.insert_or_assign(std::string(key), value);
  }

  std::string title, filename, place;
  std::vector<platform::menu_item> offers;
  bool edited = false, visible = false, full_screen = false;
  int menu_openings = 0, status_bar_entries = 0;
  std::map<std::string, plist::value, std::less<>> values;

 private:
  window_order& order_;
  platform::window_delegate& delegate_;
  platform::responder& first_;
};

/// Remembers its tabs, and has what the user does with them done by tests.
class recorded_tab_bar final : public platform::tab_bar {
 public:
  explicit recorded_tab_bar(platform::tab_bar_delegate& d) : delegate(d) {}

  void set_tabs(std::vector<platform::shown_tab> t, platform::tab_id s) override {
    tabs = std::move(t);
    selected = s;
    ++settings;
  }
  void update_tab(platform::shown_tab const& tab) override;
  void select_tab(platform::tab_id tab) override { selected = tab; }

  platform::tab_bar_delegate& delegate;
  std::vector<platform::shown_tab> tabs;
  platform::tab_id selected = 0;
  int settings = 0, updates = 0;  // how often all were set, and one was
};

class recorded_side_bar final : public platform::side_bar {
 public:
  recorded_side_bar(platform::tree_client& c, platform::responder& a) : client(c), actions(a) {}

  bool is_visible() const override { return visible; }
  void set_visible(bool v) override { visible = v; }
  bool is_on_right() const override { return on_right; }
  void set_on_right(bool right) override { on_right = right; }
  int width() const override { return pixels; }
  void set_width(int w) override { pixels = w; }
  void set_font_size(double size) override { font_size = size; }
  bool has_focus() const override { return focused; }
  void set_focus(bool to_tree) override { focused = to_tree; }

  platform::tree_client& client;
  platform::responder& actions;
  bool visible = false, on_right = false, focused = false;
  int pixels = 200;
  double font_size = 0;
};

class headless_window final : public recorded_window<platform::editor_window> {
 public:
  headless_window(window_order& order, platform::window_delegate& delegate,
                  platform::view_client& client, platform::responder& first)
      : recorded_window(order, delegate, first), host(client, number()) {}

  platform::tab_bar& tabs(platform::tab_bar_delegate& delegate) override {
    if (!tab_bar) tab_bar.emplace(delegate);
    return *tab_bar;
  }

  platform::side_bar& side(platform::tree_client& client, platform::responder& actions) override {
    if (!side_bar) side_bar.emplace(client, actions);
    return *side_bar;
  }

  headless_view_host host;
  std::optional<recorded_side_bar> side_bar;
  std::optional<recorded_tab_bar> tab_bar;  // of a window that has one
};

/// A page that is read only when a test says so.
class headless_html_window final : public recorded_window<platform::html_window> {
 public:
  /// Is in `made` as long as it lives.
  headless_html_window(window_order& order, std::vector<headless_html_window*>& made,
                       platform::html_window_delegate& delegate);
  ~headless_html_window() override;

  platform::html_window_delegate* delegate() const override { return &page_delegate_; }
  void load(std::string const& u, std::shared_ptr<platform::page_stream> content) override;
  void stop_loading() override;
  platform::page_frame frame() const override { return seen; }
  void scroll_to(platform::point upper_left) override;
  void set_busy(bool b) override { busy = b; }
  void set_message(std::string const& m) override { message = m; }
  bool perform(std::string_view selector) override;
  bool can_print() const override { return true; }
  void print() override { ++prints; }

  /// Reads what has come, into `shown`; at its end the page has loaded.
  void read();

  std::string url, shown, message;
  std::shared_ptr<platform::page_stream> page;
  platform::page_frame seen;
  std::vector<platform::point> scrolls;
  std::vector<std::string> performed;
  bool busy = false;
  int prints = 0;

 private:
  std::vector<headless_html_window*>& made_;
  platform::html_window_delegate& page_delegate_;
};

}  // namespace headless
