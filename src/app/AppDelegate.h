#pragma once

#include "app/clip_history_file.h"
#include "app/file_argument.h"
#include "app/offer_safety_copies.h"
#include "app/open_options.h"
#include "app/recent_files.h"
#include "bundles/bundle_watcher.h"
#include "platform/application.h"
#include "platform/notification_center.h"
#include "platform/run_loop.h"
#include "plist/value.h"
#include "styles/theme_watcher.h"
#include "text/line_place.h"
#include "windows/WynFileChooser.h"
#include "windows/find_in_project.h"
#include "windows/go_to_box.h"
#include "windows/html_outputs.h"
#include "windows/windows_owner.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class BundleItem;
class WynProjectController;
class WynTextView;

/// The application: opens files in windows, owns their controllers, and sees to it that quitting
/// loses no unsaved work. The end of every responder chain. Main thread only.
class AppDelegate : public platform::application_delegate,
                    public windows::windows_owner,
                    public app::document_opener {
 public:
  /// Gets what commands have written first; true keeps it from texts and windows.
  using output_taker = std::function<bool(commands::finished_command const&)>;

  /// `menus` is the property list of share/menus.plist. `recent_list` is the path of the list of
  /// recent files, empty for one that isn't kept. With a `taker` there are no windows with pages.
  AppDelegate(plist::value menus, std::string const& recent_list, output_taker taker = {});
  ~AppDelegate() override;

  /// What to open at launch: arguments FILE[:LINE[:COLUMN]], folders and project files, taken from
  /// `directory`.
  void setLaunchArguments(std::vector<std::string> arguments, std::string directory);
  /// Why the menus aren't those that are installed; shown once the first window is there. Empty if
  /// they are.
  void setMenuFault(std::string fault) { menuFault_ = std::move(fault); }
  /// Shows a file, in the window that has it already if there is one. Null when it could not be
  /// read; the user has seen an alert.
  windows::document_window* openFile(std::string const& path,
                                     std::optional<text::line_place> const& place) {
    return openFile(path, place, nullptr);
  }
  /// Opens what was asked for at once: projects in windows of their own, a folder, or several files
  /// and folders, in one for all of them.
  void openFiles(std::vector<app::file_argument> files, app::open_options const& options = {});
  /// The document of that file, if a window has it. Null if none has.
  std::shared_ptr<WynDocument> documentOfFile(std::string const& path) const;
  /// The window that shows the document, or has it in a tab.
  windows::document_window* windowOfDocument(WynDocument const& document) const;
  /// What a URL of the scheme "qrnt" asks for: an existing file at a place, or a place in the
  /// document in front.
  void openURL(std::string const& url);
  /// Open panels begin in the folder of the file from now on, or in the folder itself.
  void changeDirectoryFor(std::string const& path);
  /// The window in front comes before those of other programs; an untitled document if there is
  /// none, and one is wanted. See platform::window for the token.
  void comeToFront(std::string const& activation_token);
  /// What other processes ask for. An end of the program that the user has agreed to is called off
  /// while something of it is to be opened yet.
  struct request_taker {
    std::function<void()> open_all = {};     ///< at the end of the launch
    std::function<bool()> has_waiting = {};  ///< something has been promised, and isn't open yet
    std::function<void()> refuse = {};       ///< nothing is promised any more
  };
  void setRequests(request_taker taker) { requests_ = std::move(taker); }
  void openFiles(std::vector<std::string> const& paths);
  void newDocument();
  void newProject();

  /// Front to back.
  std::vector<windows::document_window*> orderedControllers() const;
  std::vector<std::shared_ptr<WynDocument>> orderedDocuments() const;
  app::recent_files& recentFiles() { return recent_; }

  /// What lists of all actions have beside the menus, in the form of menus.
  std::vector<platform::menu_item> actionsWithoutMenu() const;

  void adopt(std::unique_ptr<windows::document_window> controller);

  // document_opener
  windows::document_window* openFile(std::string const& path) override {
    return openFile(path, std::nullopt);
  }
  /// In an empty window if there is any, else in one that is to be shown yet.
  windows::document_window& show(std::shared_ptr<WynDocument> document) override;

  // windows_owner
  platform::responder& lastResponder() override { return *this; }
  std::string currentDirectory() const override { return currentDirectory_; }
  std::vector<platform::menu_item> contextMenu() const override;
  std::vector<platform::menu_item> recentItems() const override;
  void noteRecentFile(std::string const& path) override { recent_.add(path); }
  void documentNameDidChange() override;
  void didCloseWindow(platform::window_delegate& controller) override;
  void openAsNewDocument(text::text_block const& text) override;
  void showInNewWindow(std::shared_ptr<WynDocument> document) override;
  std::vector<platform::menu_item> tabMenu() const override;
  std::vector<platform::menu_item> treeMenu() const override;
  bool takesOutput(commands::finished_command const& command) override {
    return outputTaker_ && outputTaker_(command);
  }

  // platform::application_delegate
  void didFinishLaunching() override;
  /// Asked again while its questions are on screen, it gives false.
  bool applicationShouldTerminate() override;
  bool applicationMustTerminate() override;
  void applicationDidBecomeActive() override;
  void applicationWillResignActive() override;
  bool shouldSwallowEvent(platform::key_event const& event) override;
  plist::dictionary environmentVariables() const override;
  std::vector<platform::menu_item> mainMenu() const override;
  std::vector<platform::menu_item> statusMenu(std::string_view part) const override;
  /// Those that are found by letters instead of in a menu.
  std::vector<platform::menu_item> listItems(std::string const& name) const;
  std::vector<platform::menu_item> dynamicItems(std::string_view name) const override;

 private:
  void addThemeMethods();
  void addResultMethods();
  void addHelpMethods();
  void showKeyboardShortcuts();
  void openPlace(commands::output_place const& place);
  windows::find_in_project& findInProject();
  bool newDocumentFromTemplate(std::string const& uuid);
  bool newFileFromTemplate(std::string const& uuid);
  std::vector<std::string> filesOfTemplate(BundleItem& item, std::string const& path);
  bool showAsNewDocument(std::string const& path);
  windows::document_window& showText(text::text_block const& text);
  void addClipboardMethods();
  void openLaunchArguments();
  void tellOfDamagedDefaults(plist::value const& info);
  bool installIfBundle(std::string const& path);
  windows::document_window& newWindow(std::shared_ptr<WynDocument> document);
  WynProjectController& newProjectWindow();
  void openProject(std::string const& path);
  void openTogether(std::vector<app::file_argument> const& files);
  windows::document_window* openFile(std::string const& path,
                                     std::optional<text::line_place> const& place,
                                     WynProjectController* project);
  windows::document_window* windowWithFile(std::string const& path);
  void closeUnusedWindow();
  void addToRecent(std::string const& path);
  void openDocument();
  void openFolder();
  void place(windows::document_window& controller) const;
  void keepPlacement(platform::window const& window) const;
  void keepPlacements() const;
  void openRecentFile(std::string const& path);
  /// Null when no window shows a document.
  WynTextView* frontTextView() const;
  void orderFrontGoToLinePanel();
  /// Those of a property list, with the keys of the menu bar and of the user's bindings.
  std::vector<platform::menu_item> menuWithKeys(plist::value const& items) const;
  /// The menu bar, and what is in none of its menus, with dynamic menus filled in but for those of
  /// texts and bundles.
  std::vector<platform::menu_item> menusOfActions() const;
  void selectBundleItem(bool by_key);
  /// The box in which files, symbols, lines, actions and bundle items are found; `typed` stands in
  /// it at first.
  void goTo(std::string typed);
  windows::go_to_box::part filesToGoTo(windows::document_window& front);
  windows::go_to_box::part actionsToGoTo(WynTextView& view);
  bool openInOwnWindow(std::string const& path, std::optional<text::line_place> const& place);
  bool openChosenFile(windows::document_window& front, std::string const& path,
                      std::optional<text::line_place> const& place, platform::picked_way way);
  bool goToLine(std::string const& place);
  bool confirmQuitting();
  /// Other processes have asked for something that is to be opened yet.
  bool hasRequests() const { return requests_.has_waiting && requests_.has_waiting(); }
  void terminate();
  bool reviewUnsavedDocuments();
  bool saveProjects();
  void releaseClosed();
  /// Runs `work` in a later turn of the loop, when nothing waits, unless the application has ended
  /// by then.
  void postWhileAlive(std::function<void()> work);
  void selectWindow(int step);

  output_taker const outputTaker_;
  plist::value menus_;
  std::string menuFault_;
  app::recent_files recent_;
  app::clip_history_file clips_;
  std::unique_ptr<platform::timer> clipboardTimer_;
  std::string currentDirectory_;
  std::vector<std::string> launchArguments_;
  app::open_options openOptions_;  // of what is being opened
  request_taker requests_;
  std::unique_ptr<platform::timer> defaultsTimer_;
  platform::notification_center::token damagedDefaults_;
  std::unique_ptr<bundles::bundle_watcher> bundleWatcher_;
  std::unique_ptr<styles::theme_watcher> themeWatcher_;
  std::vector<std::unique_ptr<windows::document_window>> controllers_, closing_;
  windows::file_lists fileLists_;
  std::vector<std::string> usedFiles_;  // shown when others were gone to, the last one first
  std::unique_ptr<windows::html_outputs> htmlOutputs_;       // null with an output taker
  std::unique_ptr<windows::find_in_project> findInProject_;  // made when it is first wanted
  bool isAskingToQuit_ = false;
  std::shared_ptr<int> lives_ = std::make_shared<int>(0);
};
