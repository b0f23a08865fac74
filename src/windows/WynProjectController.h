#pragma once

#include "platform/notification_center.h"
#include "platform/tab_bar.h"
#include "platform/tree/side_bar.h"
#include "projects/file_tree.h"
#include "projects/project_file.h"
#include "projects/text_files.h"
#include "windows/document_window.h"
#include "windows/sidebar/tree_controller.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A window with the files of a project: a tree of them, and a tab for each that is open.
///
///     auto project = std::make_unique<WynProjectController>(owner);
///     if (!project->initWithContentsOfFile(path)) ...   // the user has seen why
///     project->selectItem("/home/me/src/main.cc");
///
/// Files are named by their paths: one that is in the tree twice is one document with one tab.
class WynProjectController : public windows::document_window,
                             public platform::tab_bar_delegate,
                             public windows::tree_owner {
 public:
  explicit WynProjectController(windows::windows_owner& owner);
  ~WynProjectController() override;

  /// Reads a project file, which may be missing. False if it can't be read: the user has seen an
  /// alert, the project is empty, and the file isn't overwritten unasked.
  bool initWithContentsOfFile(std::string const& path);
  /// A project for the moment, of a folder or of several files.
  void initWithFiles(std::vector<std::string> paths);
  /// Of such a project, the folders and files that it was made of, in the order given.
  std::vector<std::string> const& openedItems() const { return openedItems_; }

  std::string const& filename() const { return filename_; }
  void setFilename(std::string const& path);
  std::string const& projectDirectory() const { return projectDirectory_; }
  bool isScratchProject() const { return isScratchProject_; }
  /// Without the suffix of the file; or "Project" with a number.
  std::string displayName() const;
  projects::file_tree& tree() { return tree_; }
  /// Files and folders that are selected in the tree.
  std::vector<std::string> selectedInTree() { return treeView_.selectedPaths(); }
  plist::array const& projectVariables() const { return contents_.variables; }
  void setProjectVariables(plist::array v) { contents_.variables = std::move(v); }

  /// Saves the project itself. False if it could not be; the user has seen an alert.
  bool writeToFile(std::string const& path);
  bool saveProject();
  bool saveProjectAs();
  /// The user edits the variables that are enabled, as a property list.
  void editProjectVariables();

  struct tab {
    platform::tab_id id = 0;
    std::string path;                       ///< empty for an untitled document
    std::shared_ptr<WynDocument> document;  ///< null until the tab is first selected
    std::string title;
    platform::notification_center::token edited, renamed;
  };
  std::vector<tab> const& tabs() const { return tabs_; }
  std::size_t selectedTab() const { return selected_; }
  void selectTab(std::size_t index);
  void moveTab(std::size_t from, std::size_t to);
  /// Asks before unsaved changes are lost. False if the tab stays.
  bool performCloseTab(std::size_t index);
  bool performCloseAllTabs();
  /// All but this one; but the selected one without it.
  bool performCloseOtherTabs(platform::tab_id id);
  /// Opens the tab last closed once more. False if there is none.
  bool reopenClosedTab();

  /// Shows the file in a tab. False if it can't be opened as text, or not at all.
  bool selectItem(std::string const& path);
  /// The same for one that the user has named, whatever it holds; it need not exist. `path` is
  /// standardized.
  bool openFile(std::string const& path);
  /// Whether it is a file of the project, or would be one if it existed.
  bool holdsFile(std::string const& path) const;
  bool hasTabOf(std::string const& path) const;
  /// The document of a file, opened if it isn't. Null if it can't be; the user has seen an alert.
  /// An empty path gives a new document.
  std::shared_ptr<WynDocument> documentForItem(std::string const& path);
  bool canOpenFile(std::string const& path) const;
  /// By the settings and the languages that are installed.
  static projects::text_file_rules textFileRules();
  void toggleTreatFileAsText(std::string const& path);
  /// Finds in all files of the project, or replaces what "replacements" says of what such a search
  /// has found, by the options "action", "findString", "replaceString", "regularExpression" and
  /// "ignoreCase". A list of results, or of summaries (result_dictionary of project_search.h).
  plist::value findInProjectWithOptions(plist::value const& options);
  bool goToNextFile(int step);
  /// Goes through the tabs in the order in which they were used last, until one is selected: the
  /// tab bar does that when Ctrl is released.
  bool goToNextUsedFile(int step);
  /// Moves the selected tab.
  bool moveTab(int step);
  /// Goes to the file of the same name with the next other extension in its folder.
  bool goToFileCounterpart();

  std::size_t numberOfModifiedDocuments() const;
  /// False when one of them failed. Untitled documents aren't asked for.
  bool saveAllDocuments();
  /// Looks what has become of the files; tabs of files that are gone are closed, unless they hold
  /// unsaved changes.
  void refresh();
  /// The folder that commands work in; "" if there is none.
  std::string findProjectDirectory() const;

  /// The tree at the side of the text.
  platform::side_bar& sideBar() { return side_; }
  // tree_owner
  file_state stateOfFile(std::string const& path) const override;
  bool showTreeFile(std::string const& path, bool keeps) override;
  void focusText() override { side_.set_focus(false); }
  void fileWasMoved(std::string const& from, std::string const& to) override;
  void filesWereRemoved() override { closeTabsOfMissingFiles(); }
  std::string treeDirectory() const override { return findProjectDirectory(); }
  std::vector<platform::menu_item> treeMenu() override { return owner().treeMenu(); }

  // document_window
  std::vector<std::shared_ptr<WynDocument>> documents() const override;
  std::vector<platform::menu_item> openTabs() const override;
  std::string folderForNewFiles() const override;
  bool saveBeforeEnd() override;
  // tab_bar_delegate
  void tabWasSelected(platform::tab_id id) override;
  void tabShouldClose(platform::tab_id id) override;
  void tabWasMoved(platform::tab_id id, std::size_t to) override;
  void tabWasDroppedHere(platform::tab_id id, std::size_t to) override;
  void tabWasDraggedOut(platform::tab_id id) override;
  std::vector<platform::menu_item> menuForTab(platform::tab_id id) override;
  // platform
  bool windowShouldClose() override;
  void windowDidBecomeKey() override;
  bool isDocumentEdited() const override { return numberOfModifiedDocuments() != 0; }
  plist::dictionary environmentVariables() const override;
  // command_owner
  bool willExecuteCommand(commands::command_options const& command) override;

 protected:
  void documentDidChange() override;
  std::string windowTitle() const override;
  void closeTab(platform::tab_id id) override;

 private:
  void addProjectMethods();
  void addSideBarMethods();
  void showSideBar(bool visible, std::optional<std::int64_t> width = {});
  void keepSideBar();
  void showContents();
  platform::shown_tab shownTab(tab const& of) const;
  void tabsDidChange();
  void showTab(std::size_t index);
  void noteUse();
  void showStateOf(WynDocument const& document);
  std::optional<std::size_t> indexOfTab(platform::tab_id id) const;
  bool showFile(std::string const& path);
  void takeDocument(std::shared_ptr<WynDocument> const& document, std::size_t to);
  tab newTab(std::string path, std::shared_ptr<WynDocument> document = nullptr);
  void adopt(tab& into, std::shared_ptr<WynDocument> document);
  tab* tabWithPath(std::string const& path);
  std::shared_ptr<WynDocument> documentOfTab(tab& of);
  void documentWasRenamed(WynDocument const& document);
  void removeTab(std::size_t index, bool can_come_back = true);
  void closeTabsOfMissingFiles();
  void keepMetaData(tab const& of);
  std::vector<WynDocument*> modifiedDocuments() const;
  bool askToSaveModifiedDocuments(WynDocument const* except = nullptr);
  bool copyPathOfTab(platform::tab_id id);
  bool askToSaveProject();
  void tell(std::string const& title, std::string const& text) const;

  std::string filename_;
  std::string projectDirectory_;
  unsigned untitledCount_ = 0;
  std::vector<std::string> openedItems_;
  bool isScratchProject_ = false;
  bool isUnreadable_ = false;  // the project file
  std::optional<path::file_version> version_;
  projects::project_contents contents_;  // but for the items, which are the tree's
  projects::file_tree tree_;
  platform::tab_bar& bar_;
  platform::tab_id preview_ = 0;  // a tab that the next one of its kind takes the place of; or 0
  windows::tree_controller treeView_;
  platform::side_bar& side_;
  std::vector<tab> tabs_;  // at least one
  std::size_t selected_ = 0;
  std::vector<platform::tab_id> used_;  // the tabs that were shown, the last one last
  std::optional<std::size_t> used_at_;  // while the user goes through these, where
  std::vector<std::string> closed_;     // files whose tabs were closed, the last one last
};
