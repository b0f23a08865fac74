#include "headless/headless_desktop.h"

#include "platform/notification_center.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace headless {

void memory_pasteboard::set(plist::dictionary types) {
  content_ = std::move(types);
  changes_ = ++all_changes_;
}

plist::value memory_pasteboard::get(std::string_view type) const {
  auto const it = content_.find(type);
  return it == content_.end() ? plist::value() : it->second;
}

void scripted_alerts::answer(std::string title, std::string button) {
  answers_[std::move(title)] = {std::move(button)};
}

std::size_t scripted_alerts::ask(platform::alert const& question) {
  std::size_t index = question.safe_button;
  if (auto const it = answers_.find(question.title); it != answers_.end()) {
    auto const& buttons = question.buttons;
    auto const button = std::find(buttons.begin(), buttons.end(), it->second.button);
    it->second.used = it->second.used || button != buttons.end();
    if (button != buttons.end()) index = static_cast<std::size_t>(button - buttons.begin());
  }
  std::string const name = index < question.buttons.size() ? question.buttons[index] : "";
  shown.push_back({question.title, question.text + question.details, name});
  if (while_open) while_open();
  return index;
}

std::vector<std::pair<std::string, std::string>> scripted_alerts::unused_answers() const {
  std::vector<std::pair<std::string, std::string>> unused;
  for (auto const& [title, answer] : answers_)
    if (!answer.used) unused.emplace_back(title, answer.button);
  return unused;
}

std::vector<std::string> scripted_panels::ask_open(platform::open_request const&) {
  if (while_open) while_open();
  if (open_answers.empty()) return {};
  std::vector<std::string> const answer = open_answers.front();
  open_answers.pop_front();
  return answer;
}

std::optional<platform::save_answer> scripted_panels::ask_save(
    platform::save_request const& request) {
  if (while_open) while_open();
  last_save_request = request;
  if (save_answers.empty()) return std::nullopt;
  std::optional<platform::save_answer> const answer = save_answers.front();
  save_answers.pop_front();
  return answer;
}

std::optional<std::string> scripted_prompts::ask(std::string const&, std::string const&,
                                                 std::string const& initial) {
  if (while_open) while_open();
  last_initial = initial;
  if (answers.empty()) return std::nullopt;
  std::string const answer = answers.front();
  answers.pop_front();
  return answer;
}

std::optional<platform::picked_row> scripted_picker::ask(platform::picker_request const& request,
                                                         platform::picker_source& source) {
  last_request = request;
  if (!request.initial.empty()) source.set_filter(request.initial);
  auto const row = choose ? choose(source) : std::nullopt;
  return row ? std::optional(platform::picked_row{*row, way}) : std::nullopt;
}

std::optional<platform::font> scripted_fonts::ask(platform::font const& initial) {
  last_initial = initial;
  if (answers.empty()) return std::nullopt;
  platform::font const answer = answers.front();
  answers.pop_front();
  return answer;
}

std::optional<std::size_t> scripted_clips::ask(std::vector<platform::clip_entry> const& clips,
                                               std::size_t selected,
                                               selection_observer const& did_select) {
  last_clips = clips;
  last_selected = selected;
  if (while_open) while_open();
  for (std::size_t const row : std::exchange(visited, {})) did_select(row);
  if (answers.empty()) return std::nullopt;
  std::size_t const answer = answers.front();
  answers.pop_front();
  return answer;
}

std::optional<platform::filter_values> scripted_commands::ask(
    platform::command_panel_request const& request) {
  last_request = request;
  if (answers.empty()) return std::nullopt;
  platform::filter_values const answer = answers.front();
  answers.pop_front();
  return answer;
}

void memory_appearance::set_dark(bool dark) {
  if (dark == dark_) return;
  dark_ = dark;
  platform::notification_center::standard().post(did_change, this);
}

void scripted_find_panel::order_front(bool replace_field) {
  visible = true;
  in_replace_field = replace_field;
}

void scripted_find_panel::close() {
  if (!visible) return;
  visible = false;
  if (delegate != nullptr) delegate->findPanelDidClose();
}

void scripted_project_find::close() {
  if (!std::exchange(visible, false)) return;
  if (delegate != nullptr) delegate->projectFindDidClose();
}

void scripted_find_panel::set_histories(std::vector<std::string> const& find,
                                        std::vector<std::string> const& replace) {
  find_history = find;
  replace_history = replace;
}

bool scripted_busy::handle_events(double seconds) {
  if (while_busy) while_busy();
  std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
  if (++looks <= cancel_after) return false;
  platform::desktop::current().waits().escape();
  return true;
}

headless_desktop::headless_desktop() : former_(platform::desktop::current_or_null()) {
  set_current(this);
}

headless_desktop::~headless_desktop() {
  set_current(former_);
}

std::unique_ptr<platform::editor_window> headless_desktop::make_window(
    platform::window_delegate& delegate, platform::view_client& client,
    platform::responder& first) {
  auto window = std::make_unique<headless_window>(order_, delegate, client, first);
  window->host.seen = shows_windows;
  return window;
}

std::unique_ptr<platform::html_window> headless_desktop::make_html_window(
    platform::html_window_delegate& delegate) {
  return std::make_unique<headless_html_window>(order_, html_windows, delegate);
}

int headless_desktop::run(platform::application_delegate& app) {
  app.didFinishLaunching();
  loop_.run_for(0);
  return 0;
}

}  // namespace headless
