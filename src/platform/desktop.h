#pragma once

#include "platform/appearance.h"
#include "platform/application.h"
#include "platform/file_watcher.h"
#include "platform/find_panel.h"
#include "platform/font_panel.h"
#include "platform/html_window.h"
#include "platform/panels/alert.h"
#include "platform/panels/busy_panel.h"
#include "platform/panels/clip_panel.h"
#include "platform/panels/command_panel.h"
#include "platform/panels/file_panel.h"
#include "platform/panels/project_find_panel.h"
#include "platform/panels/prompt_panel.h"
#include "platform/pasteboard.h"
#include "platform/picker.h"
#include "platform/run_loop.h"
#include "platform/waiting.h"
#include "platform/window.h"

#include <memory>
#include <string>
#include <vector>

namespace platform {

/// Everything the logic needs of a desktop in one place. One is current at any time: that of the
/// window system, or the one without windows that tests and batch mode use. Main thread only.
class desktop {
 public:
  virtual ~desktop() = default;

  /// Must have been set.
  static desktop& current();
  static desktop* current_or_null();
  static void set_current(desktop* d);  // not owned

  virtual run_loop& loop() = 0;
  virtual pasteboard& general_pasteboard() = 0;
  /// The text last selected anywhere, which the middle mouse button inserts.
  virtual pasteboard& primary_selection() = 0;
  /// The text to search for, shared by all windows of this process.
  virtual pasteboard& find_pasteboard() = 0;
  virtual alert_panel& alerts() = 0;
  virtual file_panels& panels() = 0;
  virtual prompt_panel& prompts() = 0;
  virtual picker& pickers() = 0;
  virtual find_panel& find() = 0;
  virtual project_find_panel& project_find() = 0;
  virtual busy_panel& busy() = 0;
  virtual font_panel& fonts() = 0;
  virtual clip_panel& clips() = 0;
  virtual command_panel& commands() = 0;
  virtual platform::appearance& appearance() = 0;
  virtual void beep() = 0;
  /// Shows the files and folders in the user's file manager, selected there. Returns at once.
  virtual void show_in_file_manager(std::vector<std::string> const& paths) = 0;
  virtual file_watcher& files() = 0;
  virtual waiting& waits() = 0;
  /// Ends the alert or panel that was opened last, if any is open, without an answer.
  virtual void dismiss_dialog() = 0;

  /// A window that shows `client` and sends its actions to `first`, not yet on screen.
  virtual std::unique_ptr<editor_window> make_window(window_delegate& delegate, view_client& client,
                                                     responder& first) = 0;
  /// A window for a page, not yet on screen.
  virtual std::unique_ptr<html_window> make_html_window(html_window_delegate& delegate) = 0;
  /// The windows on screen, miniaturized ones last, the others front to back.
  virtual std::vector<window*> ordered_windows() const = 0;

  /// Shows the application's menus, calls didFinishLaunching and handles events until terminate()
  /// is called; gives the exit status.
  virtual int run(application_delegate& app) = 0;
  /// Ends run(). The loop is left at its next turn.
  virtual void terminate() = 0;

  /// Quits when nothing waits any more, unless the user keeps the program running then.
  void request_quit(application_delegate& app);
  /// Cancels what waits, keeps what isn't saved and terminates, without a question.
  void end_at_once(application_delegate& app);
  /// The session is about to end, and may only be kept waiting if `may_ask`. False if it isn't to,
  /// since the user has cancelled it or some text could not be kept.
  bool end_session(application_delegate& app, bool may_ask);
  /// The program ends now, with the stack as it stands: keeps what isn't saved. False if something
  /// is lost.
  bool end_within_exit(application_delegate& app);
  /// Whether something could not be kept then: run() should give a failure.
  bool has_lost_text() const { return has_lost_text_; }

 private:
  bool keep_text(application_delegate& app);

  bool has_lost_text_ = false;
};

/// The desktop's, if there is one.
void beep();

}  // namespace platform
