#pragma once

#include "desktop/BusyPanel.h"
#include "desktop/FindBar.h"
#include "desktop/MenuBar.h"
#include "desktop/ProjectFindWindow.h"
#include "desktop/QtAlertPanel.h"
#include "desktop/QtAppearance.h"
#include "desktop/QtClipPanel.h"
#include "desktop/QtCommandPanel.h"
#include "desktop/QtFilePanels.h"
#include "desktop/QtFontPanel.h"
#include "desktop/QtPasteboard.h"
#include "desktop/QtPicker.h"
#include "desktop/QtPromptPanel.h"
#include "desktop/QtRunLoop.h"
#include "desktop/WaitingKeys.h"
#include "desktop/WindowOwner.h"
#include "headless/headless_desktop.h"
#include "platform/desktop.h"

#include <QApplication>

#include <map>
#include <string>

namespace widgets {

/// Quitting from outside (session, window manager) goes through the logic.
class Application final : public QApplication {
 public:
  using QApplication::QApplication;
  std::function<void()> on_quit;

  /// An event for which memory runs out is given up, and the user sees an alert.
  bool notify(QObject* receiver, QEvent* event) override;

 protected:
  bool event(QEvent* event) override;

 private:
  bool is_telling_ = false;
};

/// The desktop with windows. Becomes the current one.
class QtDesktop final : public platform::desktop, public WindowOwner {
 public:
  QtDesktop(int& argc, char** argv);
  ~QtDesktop() override;

  platform::run_loop& loop() override { return loop_; }
  platform::pasteboard& general_pasteboard() override { return general_; }
  platform::pasteboard& primary_selection() override { return *primary_; }
  platform::pasteboard& find_pasteboard() override { return find_; }
  platform::alert_panel& alerts() override { return alerts_; }
  platform::file_panels& panels() override { return panels_; }
  platform::prompt_panel& prompts() override { return prompts_; }
  platform::picker& pickers() override { return picker_; }
  platform::find_panel& find() override { return find_bar_; }
  platform::project_find_panel& project_find() override { return project_find_; }
  platform::busy_panel& busy() override { return busy_; }
  platform::font_panel& fonts() override { return fonts_; }
  platform::clip_panel& clips() override { return clips_; }
  platform::command_panel& commands() override { return commands_; }
  platform::appearance& appearance() override { return appearance_; }
  void beep() override { QApplication::beep(); }
  void show_in_file_manager(std::vector<std::string> const& paths) override;
  platform::file_watcher& files() override { return files_; }
  platform::waiting& waits() override { return waits_; }
  void dismiss_dialog() override;
  std::unique_ptr<platform::editor_window> make_window(platform::window_delegate& delegate,
                                                       platform::view_client& client,
                                                       platform::responder& first) override;
  std::unique_ptr<platform::html_window> make_html_window(
      platform::html_window_delegate& delegate) override;
  std::vector<platform::window*> ordered_windows() const override;
  int run(platform::application_delegate& app) override;
  void terminate() override;

  // WindowOwner
  platform::application_delegate* application() const override { return delegate_; }
  menu_items const& main_menu() override;  // asked for once in a run(); empty outside
  platform::menu_item const* item_for_key(platform::key_event const& event) override;
  void add(platform::window& window) override { windows_.push_back(&window); }
  void remove(platform::window& window) override { std::erase(windows_, &window); }
  void bring_to_front(platform::window& window) override;
  void window_closed() override;

 private:
  void index_keys(std::vector<platform::menu_item> const& items);
  void ask_to_quit();
  void connect_session();

  Application qt_;
  QtRunLoop loop_;
  platform::waiting waits_{loop_};
  platform::file_watcher files_{loop_, waits_};
  QtPasteboard general_;
  std::unique_ptr<platform::pasteboard> primary_;
  headless::memory_pasteboard find_;
  QtAlertPanel alerts_;
  QtFilePanels panels_;
  QtPromptPanel prompts_;
  QtPicker picker_;
  FindBar find_bar_;
  ProjectFindWindow project_find_;
  BusyPanel busy_;
  QtFontPanel fonts_;
  QtClipPanel clips_;
  QtCommandPanel commands_;
  QtAppearance appearance_;
  WaitingKeys waiting_keys_{waits_, busy_, find_bar_, [this](platform::key_event const& key) {
                              return delegate_ != nullptr && delegate_->shouldSwallowEvent(key);
                            }};
  platform::application_delegate* delegate_ = nullptr;
  bool terminated_ = false;
  std::vector<platform::window*> windows_;  // the one active last comes first
  menu_items menu_;
  std::map<std::string, platform::menu_item const*> items_by_key_;  // into *menu_
};

}  // namespace widgets
