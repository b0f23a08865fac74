#include "platform/desktop.h"

// What all alerts and panels have in common, on any desktop: they wait.

namespace platform {
namespace {

/// A dialog that is open; `was_dismissed` once it has been ended from outside.
class open_dialog {
 public:
  bool was_dismissed() const { return was_dismissed_; }

 private:
  void dismiss() {
    was_dismissed_ = true;
    desktop::current().dismiss_dialog();
  }

  bool was_dismissed_ = false;
  waiting::scope const scope_{desktop::current().waits(), [this] { dismiss(); }};
};

/// What `ask` answers; `cancelled` if it was dismissed, or can't be asked any more.
template <typename answer, typename function>
answer ask_user(answer cancelled, function const& ask) {
  if (desktop::current().waits().is_ending()) return cancelled;
  open_dialog const dialog;
  answer result = ask();
  return dialog.was_dismissed() ? cancelled : result;
}

}  // namespace

std::size_t alert_panel::run(alert const& question) {
  bool const has_safe_one = question.safe_button < question.buttons.size();
  return ask_user(has_safe_one ? question.safe_button : 0, [&] { return ask(question); });
}

std::vector<std::string> file_panels::run_open(open_request const& request) {
  return ask_user(std::vector<std::string>(), [&] { return ask_open(request); });
}

std::optional<save_answer> file_panels::run_save(save_request const& request) {
  return ask_user(std::optional<save_answer>(), [&] { return ask_save(request); });
}

std::optional<std::string> prompt_panel::run(std::string const& title, std::string const& text,
                                             std::string const& initial) {
  return ask_user(std::optional<std::string>(), [&] { return ask(title, text, initial); });
}

std::optional<std::size_t> clip_panel::run(std::vector<clip_entry> const& clips,
                                           std::size_t selected,
                                           selection_observer const& did_select) {
  return ask_user(std::optional<std::size_t>(), [&] { return ask(clips, selected, did_select); });
}

std::optional<filter_values> command_panel::run(command_panel_request const& request) {
  return ask_user(std::optional<filter_values>(), [&] { return ask(request); });
}

std::optional<picked_row> picker::run(picker_request const& request, picker_source& source) {
  auto const picked = ask_user(std::optional<picked_row>(), [&] { return ask(request, source); });
  bool const can_be = picked && picked->row < source.count() && source.row(picked->row).enabled;
  return can_be ? picked : std::nullopt;
}

std::optional<font> font_panel::run(font const& initial) {
  return ask_user(std::optional<font>(), [&] { return ask(initial); });
}

}  // namespace platform
