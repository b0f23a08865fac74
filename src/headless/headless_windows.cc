#include "headless/headless_windows.h"

namespace headless {

void window_order::bring_to_front(platform::window& window) {
  remove(window);
  windows_.insert(windows_.begin(), &window);
}

void recorded_tab_bar::update_tab(platform::shown_tab const& tab) {
  ++updates;
  for (platform::shown_tab& each : tabs)
    if (each.id == tab.id) each = tab;
}

headless_html_window::headless_html_window(window_order& order,
                                           std::vector<headless_html_window*>& made,
                                           platform::html_window_delegate& delegate)
    : recorded_window(order, delegate, delegate), made_(made), page_delegate_(delegate) {
  made_.push_back(this);
}

headless_html_window::~headless_html_window() {
  std::erase(made_, this);
}

void headless_html_window::load(std::string const& u,
                                std::shared_ptr<platform::page_stream> content) {
  stop_loading();
  url = u;
  page = std::move(content);
  shown.clear();
}

void headless_html_window::stop_loading() {
  if (page != nullptr) page->abandon();
  page = nullptr;
}

void headless_html_window::scroll_to(platform::point upper_left) {
  scrolls.push_back(upper_left);
  seen.visible.x = upper_left.x;
  seen.visible.y = upper_left.y;
  page_delegate_.pageDidScroll();
}

bool headless_html_window::perform(std::string_view selector) {
  performed.emplace_back(selector);
  return true;
}

void headless_html_window::read() {
  if (page == nullptr) return;
  char buffer[1 << 16];
  while (std::size_t const count = page->read(buffer, sizeof buffer)) shown.append(buffer, count);
  if (!page->at_end()) return;
  page = nullptr;
  page_delegate_.pageDidFinishLoading();
}

}  // namespace headless
