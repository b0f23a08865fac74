#pragma once

#include "headless/headless_run_loop.h"
#include "headless/headless_windows.h"
#include "platform/desktop.h"

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// The desktop without a window system, for batch mode and tests.
namespace headless {

class memory_pasteboard : public platform::pasteboard {
 public:
  void set(plist::dictionary types) override;
  plist::value get(std::string_view type) const override;
  std::uint64_t change_count() const override { return changes_; }

 private:
  // Of no two pasteboards the same, as the desktops of two tests are one to what outlives them.
  static inline std::uint64_t all_changes_ = 0;

  plist::dictionary content_;
  std::uint64_t changes_ = ++all_changes_;
};

/// Answers alerts from a list of titles and buttons, and with the safe button otherwise.
class scripted_alerts : public platform::alert_panel {
 public:
  struct record {
    std::string title, text, answer;
  };

  /// From now on alerts of this title get this button. A button that an alert doesn't have gives
  /// its safe one.
  void answer(std::string title, std::string button);
  /// Of the answers those that were never given, as title and button: no alert had that title, or
  /// none of these that button.
  std::vector<std::pair<std::string, std::string>> unused_answers() const;

  std::vector<record> shown;
  /// Called while an alert is open, as a real one handles events.
  std::function<void()> while_open;

 protected:
  std::size_t ask(platform::alert const& question) override;

 private:
  struct scripted_answer {
    std::string button;
    bool used = false;
  };

  std::map<std::string, scripted_answer> answers_;
};

/// Gives the answers put in before, in order; an empty list is "cancelled".
class scripted_panels : public platform::file_panels {
 public:
  std::deque<std::vector<std::string>> open_answers;
  std::deque<std::optional<platform::save_answer>> save_answers;
  platform::save_request last_save_request;
  std::function<void()> while_open;

 protected:
  std::vector<std::string> ask_open(platform::open_request const& request) override;
  std::optional<platform::save_answer> ask_save(platform::save_request const& request) override;
};

/// Gives the answers put in before, in order; without one it is cancelled.
class scripted_prompts : public platform::prompt_panel {
 public:
  std::deque<std::string> answers;
  std::string last_initial;  // what the last question proposed
  std::function<void()> while_open;

 protected:
  std::optional<std::string> ask(std::string const& title, std::string const& text,
                                 std::string const& initial) override;
};

/// Does with the rows what `choose` says, which types, presses keys and gives a row; without it the
/// picker is cancelled.
class scripted_picker : public platform::picker {
 public:
  std::function<std::optional<std::size_t>(platform::picker_source&)> choose;
  platform::picked_way way = platform::picked_way::usual;
  platform::picker_request last_request;

 protected:
  std::optional<platform::picked_row> ask(platform::picker_request const& request,
                                          platform::picker_source& source) override;
};

/// Gives the answers put in before, in order; without one it is cancelled.
class scripted_fonts : public platform::font_panel {
 public:
  std::deque<platform::font> answers;
  platform::font last_initial;

 protected:
  std::optional<platform::font> ask(platform::font const& initial) override;
};

/// Gives the answers put in before, in order; without one it is cancelled.
class scripted_clips : public platform::clip_panel {
 public:
  std::deque<std::size_t> answers;
  std::deque<std::size_t> visited;  // the next time, before that
  std::vector<platform::clip_entry> last_clips;
  std::size_t last_selected = 0;
  std::function<void()> while_open;

 protected:
  std::optional<std::size_t> ask(std::vector<platform::clip_entry> const& clips,
                                 std::size_t selected,
                                 selection_observer const& did_select) override;
};

/// Gives the answers put in before, in order; without one it is cancelled.
class scripted_commands : public platform::command_panel {
 public:
  std::deque<platform::filter_values> answers;
  platform::command_panel_request last_request;

 protected:
  std::optional<platform::filter_values> ask(
      platform::command_panel_request const& request) override;
};

/// A find panel that keeps what it is given; a test types into `fields` and notifies the delegate.
class scripted_find_panel : public platform::find_panel {
 public:
  void set_delegate(platform::find_panel_delegate* d) override { delegate = d; }
  void order_front(bool replace_field) override;
  void close() override;
  bool is_visible() const override { return visible; }
  platform::find_panel_values values() const override { return fields; }
  void set_values(platform::find_panel_values const& v) override { fields = v; }
  void set_histories(std::vector<std::string> const& find,
                     std::vector<std::string> const& replace) override;
  void set_status(std::string const& text) override { status = text; }
  void set_count(std::string const& text) override { count = text; }
  void set_preview(std::string const& text) override { preview = text; }
  void mark_error(std::size_t offset) override { error = offset; }

  platform::find_panel_delegate* delegate = nullptr;
  platform::find_panel_values fields;
  std::vector<std::string> find_history, replace_history;
  std::string status, count, preview;
  std::size_t error = std::string::npos;
  bool visible = false, in_replace_field = false;
};

/// A window for finding in projects that keeps what it is given; a test changes `fields` and
/// notifies the delegate.
class scripted_project_find : public platform::project_find_panel {
 public:
  void set_delegate(platform::project_find_delegate* d) override { delegate = d; }
  void order_front() override { visible = true; }
  void close() override;
  bool is_visible() const override { return visible; }
  platform::project_find_values values() const override { return fields; }
  void set_values(platform::project_find_values const& v) override { fields = v; }
  void set_places(std::vector<std::string> const& titles) override { places = titles; }
  void set_histories(std::vector<std::string> const&, std::vector<std::string> const&) override {}
  void set_status(std::string const& text) override { status = text; }
  void mark_error(std::size_t offset) override { error = offset; }
  void set_state(state const& s) override { shown = s; }
  void rows_did_reset() override {}
  void rows_were_added(std::size_t) override {}
  void rows_did_change() override {}
  void select(platform::project_find_place place) override { selected = place; }

  platform::project_find_delegate* delegate = nullptr;
  platform::project_find_values fields;
  std::vector<std::string> places;
  std::string status;
  std::size_t error = std::string::npos;
  state shown;
  std::optional<platform::project_find_place> selected;
  bool visible = false;
};

/// There is no waiting, unless a test says so: then work is cancelled after so many looks at
/// events.
class scripted_busy : public platform::busy_panel {
 public:
  bool is_wanted() const override { return cancel_after.has_value(); }
  bool handle_events(double seconds) override;
  void show(std::string const& text) override { shown = text; }
  void end() override { looks = 0; }

  std::optional<int> cancel_after;
  int looks = 0;
  std::string shown;
  /// Called at each look at events.
  std::function<void()> while_busy;
};

class memory_appearance : public platform::appearance {
 public:
  bool is_dark() override { return dark_; }
  bool wants_contrast() override { return has_contrast; }
  void fit_windows_to(bool dark) override { has_dark_windows = dark; }
  void set_dark(bool dark);

  bool has_dark_windows = false, has_contrast = false;

 private:
  bool dark_ = false;
};

class headless_desktop : public platform::desktop {
 public:
  headless_desktop();            // becomes the current desktop
  ~headless_desktop() override;  // puts the former one back

  headless_run_loop& loop() override { return loop_; }
  memory_pasteboard& general_pasteboard() override { return general_; }
  memory_pasteboard& primary_selection() override { return primary_; }
  memory_pasteboard& find_pasteboard() override { return find_; }
  scripted_alerts& alerts() override { return alerts_; }
  scripted_panels& panels() override { return panels_; }
  scripted_prompts& prompts() override { return prompts_; }
  scripted_picker& pickers() override { return picker_; }
  scripted_find_panel& find() override { return find_panel_; }
  scripted_project_find& project_find() override { return project_find_; }
  scripted_busy& busy() override { return busy_; }
  scripted_fonts& fonts() override { return fonts_; }
  scripted_clips& clips() override { return clips_; }
  scripted_commands& commands() override { return commands_; }
  memory_appearance& appearance() override { return appearance_; }
  void beep() override { ++beeps; }
  void show_in_file_manager(std::vector<std::string> const& paths) override { shown_files = paths; }
  platform::file_watcher& files() override { return files_; }
  platform::waiting& waits() override { return waits_; }
  void dismiss_dialog() override {}  // closes when its while_open returns
  std::unique_ptr<platform::editor_window> make_window(platform::window_delegate& delegate,
                                                       platform::view_client& client,
                                                       platform::responder& first) override;
  std::unique_ptr<platform::html_window> make_html_window(
      platform::html_window_delegate& delegate) override;
  std::vector<platform::window*> ordered_windows() const override { return order_.front_to_back(); }
  int run(platform::application_delegate& app) override;
  void terminate() override { terminated = true; }

  int beeps = 0;
  std::vector<std::string> shown_files;  // in the file manager, last
  bool terminated = false;
  std::vector<headless_html_window*> html_windows;  // in the order in which they were made
  bool shows_windows = true;  // else views in windows made from now on are never visible

 private:
  headless_run_loop loop_;
  platform::waiting waits_{loop_};
  platform::file_watcher files_{loop_, waits_};
  memory_pasteboard general_, primary_, find_;
  scripted_alerts alerts_;
  scripted_panels panels_;
  scripted_prompts prompts_;
  scripted_picker picker_;
  scripted_find_panel find_panel_;
  scripted_project_find project_find_;
  scripted_busy busy_;
  scripted_fonts fonts_;
  scripted_clips clips_;
  scripted_commands commands_;
  memory_appearance appearance_;
  window_order order_;
  platform::desktop* former_;
};

}  // namespace headless
