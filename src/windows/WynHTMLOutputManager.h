#pragma once

#include "commands/background_input.h"
#include "commands/child_process.h"
#include "commands/link_places.h"
#include "platform/html_window.h"
#include "platform/run_loop.h"
#include "plist/value.h"
#include "windows/WynQuirnoteJSBridge.h"

#include <cstdint>
#include <memory>
#include <string>

class WynHTMLOutputManager;

namespace windows {

/// What windows with output need of the application. Main thread only.
class html_output_owner {
 public:
  /// The end of the windows' responder chains.
  virtual platform::responder& lastResponder() = 0;
  /// Shows the line in the editor.
  virtual void openPlace(commands::output_place const& place) = 0;
  /// Lets go of a manager whose window has closed, in a later turn of the loop.
  virtual void didCloseWindow(WynHTMLOutputManager& manager) = 0;

 protected:
  ~html_output_owner() = default;
};

}  // namespace windows

/// A window in which the output of a command is shown as a page while it comes. It is kept when
/// the command has ended, and the next run of the command is shown in it. Main thread only.
class WynHTMLOutputManager : public platform::html_window_delegate,
                             public WynQuirnoteJSBridge::busy_state {
 public:
  explicit WynHTMLOutputManager(windows::html_output_owner& owner);
  ~WynHTMLOutputManager() override;

  /// `command` is the dictionary of a bundle's command; of html_output.h.
  void runCommand(plist::value command, std::string input, commands::variables environment,
                  std::string directory);
  void showOutput(std::string text, plist::value command, commands::variables environment,
                  std::string directory);

  /// Runs the command, or shows the text, again.
  bool reload();
  /// Ends the command's group: at once asked to, after four seconds by force.
  void terminateProcess();
  bool isDone() const { return task_ == nullptr; }
  /// Asks, if the command is still running. False to leave it alone.
  bool askToStop();
  /// For the next window of the command. Closing does it, too.
  void keepPlacement() const;
  platform::html_window& window() { return *window_; }

  /// Windows whose command has ended, by the command's UUID. Null if there is none.
  static void registerIdleWindow(WynHTMLOutputManager& manager, std::string const& uuid);
  static void unregisterIdleWindow(WynHTMLOutputManager& manager);
  static WynHTMLOutputManager* idleWindowForUUID(std::string const& uuid);

  // platform::html_window_delegate
  bool windowShouldClose() override { return askToStop(); }
  void windowWillClose() override;
  void windowDidBecomeKey() override {}
  bool isDocumentEdited() const override { return false; }
  void pageDidRequest(platform::page_request request) override;
  void pageDidChangeFrame() override;
  void pageDidScroll() override;
  void pageDidFinishLoading() override;
  void pageDidLog(std::string const& message) override;
  platform::page_link linkForURL(std::string const& url, std::string const& from) override;
  std::string fileForURL(std::string const& url) override;
  void pageProcessDidEnd() override;

  // WynQuirnoteJSBridge::busy_state
  bool isBusy() const override { return isBusy_; }
  void setIsBusy(bool busy) override;

 private:
  struct content {
    plist::value command;
    std::string text;  // input of a command that is run, or what is shown
    commands::variables environment;
    std::string directory;
    bool isRun = false;
  };

  void setUpWindow();
  void begin();
  void loadPage(std::string const& url);
  void run();
  void showText(std::string const& text);
  void watchOutput();
  void receive();
  void append(std::string const& bytes);
  void outputDidEnd();
  void lookForEnd();
  void taskDidEnd();
  void askForMore();
  void openPlace(commands::output_place const& place);
  void noteResult(commands::output_place const& place);

  windows::html_output_owner& owner_;
  platform::run_loop& loop_;
  std::unique_ptr<platform::html_window> window_;
  std::unique_ptr<WynQuirnoteJSBridge> bridge_;
  content content_;
  std::string commandUUID_, pageURL_;

  std::unique_ptr<commands::child_process> task_;
  std::unique_ptr<commands::background_input> input_;
  std::unique_ptr<platform::descriptor_watch> outputWatch_;
  std::unique_ptr<platform::timer> endTimer_, flushTimer_;
  std::shared_ptr<platform::page_stream> page_;
  std::unique_ptr<commands::link_places> links_;
  std::size_t received_ = 0;                 // bytes
  std::size_t weight_ = 0, mostWeight_ = 0;  // of them in a page
  double lastOutput_ = 0;
  bool isTerminating_ = false, isAsking_ = false;
  std::uint64_t run_ = 0;  // tells its runs apart

  platform::rect pendingVisibleRect_;
  double scrolledTo_ = 0;
  bool scrollsOnOutput_ = false, userDidScrollOutput_ = false, shouldScrollToPendingRect_ = false;
  bool isLoadingPage_ = false, isBusy_ = false;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};
