#pragma once

#include "app/AppDelegate.h"
#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "plist/xml_reader.h"
#include "source_tree.h"
#include "test.h"
#include "windows/document_window.h"

/// The application with its real menus on the desktop without windows, a folder of files, and
/// settings of its own.
class app_test : public testing::Test {
 protected:
  app_test() : app_(std::make_unique<AppDelegate>(menus(), folder / "state/RecentFiles.plist")) {
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
  }

  AppDelegate& app() { return *app_; }
  /// Ends the application and starts it again.
  void restart() {
    app_.reset();
    app_ = std::make_unique<AppDelegate>(menus(), folder / "state/RecentFiles.plist");
    app_->didFinishLaunching();
    desktop.loop().run_for(0);
  }
  platform::user_defaults& defaults() { return platform::user_defaults::standard(); }

  static headless::headless_window& window_of(windows::document_window& controller) {
    return static_cast<headless::headless_window&>(controller.window());
  }
  static void type(windows::document_window& controller, std::u16string const& text) {
    controller.textView().insertText(text);
  }
  static bool perform(windows::document_window& controller, char const* selector) {
    return controller.textView().tryToPerformWith(selector, {});
  }
  /// The titles of the windows, front to back; a star stands before those with unsaved changes.
  std::vector<std::string> windows() {
    std::vector<std::string> titles;
    for (windows::document_window* controller : app().orderedControllers())
      titles.push_back((window_of(*controller).edited ? "*" : "") + window_of(*controller).title);
    return titles;
  }
  /// The alerts since the last call, as "title|answer".
  std::vector<std::string> alerts() {
    std::vector<std::string> result;
    for (auto const& alert : desktop.alerts().shown)
      result.push_back(alert.title + "|" + alert.answer);
    desktop.alerts().shown.clear();
    return result;
  }
  void answer(std::string const& title, std::string const& button) {
    desktop.alerts().answer(title, button);
  }
  void answer_save(std::string const& name, std::string const& button) {
    answer("Do you want to save the changes you made in the document \u201c" + name + "\u201d?",
           button);
  }

  temporary_folder folder;
  headless::headless_desktop desktop;

 private:
  static plist::value menus() {
    return plist::read_xml(content_of_file(source_file("share/menus.plist"))).value;
  }

  own_defaults const settings_;
  std::unique_ptr<AppDelegate> app_;
};

using titles = strings;
