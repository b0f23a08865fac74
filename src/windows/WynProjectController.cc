#include "windows/WynProjectController.h"

#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "documents/printable_name.h"
#include "documents/untitled_numbers.h"
#include "path/entries.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "plist/key_order.h"
#include "windows/project_variables.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

documents::untitled_numbers& project_numbers() {
  static documents::untitled_numbers instance;
  return instance;
}

std::string shown(std::string const& path) {
  return documents::printable(path::abbreviate_with_tilde(path));
}

std::string without_extension(std::string const& name) {
  std::size_t const dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

std::string in_shell_quotes(std::string const& text) {
  std::string result = "'";
  for (char const c : text) result += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return result + "'";
}

// Whether the user has changed it. A document that is as its file was isn't kept when that goes.
bool holds_unsaved_text(WynDocument const& document) {
  return !document.storage().empty() &&
         document.storage().current_memento != document.lastSavedMemento();
}

// Of their folders.
std::string common_folder(std::vector<std::string> const& paths) {
  std::string folder = path::parent(paths.front());
  for (std::string const& path : paths)
    while (folder != "/" && !path.starts_with(folder + "/")) folder = path::parent(folder);
  return folder;
}

}  // namespace

WynProjectController::WynProjectController(windows::windows_owner& owner)
    : document_window(owner),
      untitledCount_(project_numbers().take()),
      tree_(platform::desktop::current().loop(), platform::desktop::current().files()),
      bar_(window().tabs(*this)),
      treeView_(*this, tree_),
      side_(window().side(treeView_, treeView_)) {
  treeView_.setNextResponder(this);
  tree_.did_change = [this](auto*) { treeView_.treeDidChange(); };
  tree_.unsaved_files = [this] {
    std::vector<std::string> paths;
    for (WynDocument const* document : modifiedDocuments())
      if (holds_unsaved_text(*document)) paths.push_back(document->filename());
    return paths;
  };
  addProjectMethods();
  addSideBarMethods();
  tabs_.push_back(newTab(""));
  selectTab(0);
  tabsDidChange();
}

WynProjectController::~WynProjectController() {
  textView().setDocument(nullptr);
  for (tab const& open : tabs_)
    if (open.document) open.document->closeDocument();
  if (filename_.empty()) project_numbers().give_back();
}

void WynProjectController::addProjectMethods() {
  auto const add = [this](char const* selector, std::function<bool(plist::value const&)> action) {
    addMethod(selector, [action = std::move(action)](plist::value const& argument) {
      return plist::value(action(argument));
    });
  };
  auto const path_in = [](plist::value const& argument) {
    auto const* const bytes = argument.as_data();
    return bytes ? std::string(bytes->begin(), bytes->end()) : argument.string_or("");
  };
  // A refusal or failure has been told to the user: no beep on top of it.
  add("saveProject:", [this](auto const&) { return saveProject(), true; });
  add("saveProjectAs:", [this](auto const&) { return saveProjectAs(), true; });
  add("saveAllDocuments:", [this](auto const&) { return saveAllDocuments(), true; });
  add("performCloseOtherTabs:", [this](plist::value const& tab) {
    return performCloseOtherTabs(static_cast<platform::tab_id>(tab.integer_or(0))), true;
  });
  addMethod("canPerformCloseOtherTabs",
            [this](plist::value const&) { return plist::value(tabs_.size() > 1); });
  add("copyPathOfTab:", [this](plist::value const& tab) {
    return copyPathOfTab(static_cast<platform::tab_id>(tab.integer_or(0)));
  });
  add("performCloseAllTabs:", [this](auto const&) { return performCloseAllTabs(), true; });
  add("reopenClosedTab:", [this](auto const&) { return reopenClosedTab(); });
  addMethod("canReopenClosedTab",
            [this](plist::value const&) { return plist::value(!closed_.empty()); });
  add("goToNextFile:", [this](auto const&) { return goToNextFile(1); });
  add("goToPreviousFile:", [this](auto const&) { return goToNextFile(-1); });
  add("goToNextUsedFile:", [this](auto const&) { return goToNextUsedFile(1); });
  add("goToPreviousUsedFile:", [this](auto const&) { return goToNextUsedFile(-1); });
  add("moveTabRight:", [this](auto const&) { return moveTab(1); });
  add("moveTabLeft:", [this](auto const&) { return moveTab(-1); });
  addMethod("selectTab:", [this](plist::value const& tab) {
    tabWasSelected(static_cast<platform::tab_id>(tab.integer_or(0)));
    return plist::value();
  });
  addMethod("selectTabIsChecked:", [this](plist::value const& tab) {
    return plist::value(tabs_[selected_].id == tab.integer_or(0));
  });
  add("refreshProject:", [this](auto const&) { return refresh(), true; });
  add("editProjectVariables:", [this](auto const&) { return editProjectVariables(), true; });
  for (char const* const query : {"canGoToNextFile", "canGoToPreviousFile", "canGoToNextUsedFile",
                                  "canGoToPreviousUsedFile", "canMoveTabLeft", "canMoveTabRight"})
    addMethod(query, [this](plist::value const&) { return plist::value(tabs_.size() > 1); });
  add("goToFileCounterpart:", [this](auto const&) { return goToFileCounterpart(); });
  add("selectItem:",
      [this, path_in](plist::value const& path) { return selectItem(path_in(path)); });
  // Of the file that is shown, unless one is given.
  auto const file_in = [this, path_in](plist::value const& path) {
    std::string given = path_in(path);
    return given.empty() ? tabs_[selected_].path : given;
  };
  addMethod("findInProjectWithOptions:",
            [this](plist::value const& options) { return findInProjectWithOptions(options); });
  add("toggleTreatFileAsText:", [this, file_in](plist::value const& path) {
    toggleTreatFileAsText(file_in(path));
    return true;
  });
  addMethod("canToggleTreatFileAsText", [file_in](plist::value const& path) {
    return plist::value(!projects::extension_of(file_in(path)).empty());
  });
  addMethod("toggleTreatFileAsTextIsChecked:", [this, file_in](plist::value const& path) {
    return plist::value(canOpenFile(file_in(path)));
  });
}

void WynProjectController::tell(std::string const& title, std::string const& text) const {
  platform::desktop::current().alerts().run({title, text, {"Continue"}});
}

bool WynProjectController::initWithContentsOfFile(std::string const& path) {
  setFilename(path::standardize(path));
  auto read = projects::read_project_file(filename_);
  version_ = read.version;
  isUnreadable_ = read.error.has_value();
  if (read.error)
    tell("The project " + shown(filename_) + " could not be read.",
         *read.error + ". The file is left as it is until you save the project.");
  contents_ = std::move(read.contents);
  showContents();
  return !isUnreadable_;
}

void WynProjectController::showContents() {
  showSideBar(contents_.shows_tree, contents_.tree_width);
  tree_.set_roots(std::exchange(contents_.items, {}));
  for (std::string const& path : contents_.open_documents)
    if (tree_.holds_file(path) && tabWithPath(path) == nullptr) tabs_.push_back(newTab(path));
  std::string const current = contents_.current_document;
  if (tree_.holds_file(current))
    selectItem(current);
  else if (tabs_.size() > 1)
    selectTab(1);
  // The window's first document stays only if there is nothing else.
  if (tabs_.size() > 1 && selected_ != 0) removeTab(0);
  tabsDidChange();
  documentDidChange();
}

void WynProjectController::initWithFiles(std::vector<std::string> paths) {
  isScratchProject_ = true;
  openedItems_ = paths;
  plist::SortArrayLexicographically(paths);
  struct stat info;
  bool const is_folder =
      paths.size() == 1 && ::stat(paths.front().c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  if (!paths.empty()) projectDirectory_ = is_folder ? paths.front() : common_folder(paths);
  showSideBar(true);
  tree_.add_files(paths, nullptr, 0);
  if (is_folder && !tree_.roots().empty()) tree_.set_expanded(*tree_.roots().front(), true);
  documentDidChange();
}

void WynProjectController::setFilename(std::string const& path) {
  if (filename_.empty() && !path.empty()) project_numbers().give_back();
  filename_ = path;
  projectDirectory_ = path::parent(path);
}

std::string WynProjectController::displayName() const {
  if (!filename_.empty()) return without_extension(documents::printable_name(filename_));
  bool const has_folder = isScratchProject_ && !projectDirectory_.empty();
  if (has_folder) return documents::printable_name(projectDirectory_);
  return untitledCount_ < 2 ? "Project" : "Project " + std::to_string(untitledCount_);
}

std::string WynProjectController::windowTitle() const {
  return document_window::windowTitle() + " \u2014 " + displayName();
}

void WynProjectController::documentDidChange() {
  if (textDocument() != nullptr) document_window::documentDidChange();
  treeView_.marksDidChange();
}

// Saving and closing.

std::vector<std::shared_ptr<WynDocument>> WynProjectController::documents() const {
  std::vector<std::shared_ptr<WynDocument>> result;
  for (tab const& open : tabs_)
    if (open.document) result.push_back(open.document);
  return result;
}

std::vector<WynDocument*> WynProjectController::modifiedDocuments() const {
  std::vector<WynDocument*> result;
  for (tab const& open : tabs_)
    if (open.document && open.document->isDocumentEdited()) result.push_back(open.document.get());
  return result;
}

std::size_t WynProjectController::numberOfModifiedDocuments() const {
  return modifiedDocuments().size();
}

bool WynProjectController::saveAllDocuments() {
  bool done = true;
  // A question on the way may close tabs.
  std::vector<std::shared_ptr<WynDocument>> documents;
  for (tab const& open : tabs_)
    if (open.document && !open.path.empty()) documents.push_back(open.document);
  for (auto const& document : documents) {
    bool const is_wanted =
        document->isDocumentEdited() && (!document->fileIsGone() || !document->storage().empty());
    if (is_wanted) done = saveDocument(*document) && done;
  }
  return done;
}

bool WynProjectController::askToSaveModifiedDocuments(WynDocument const* except) {
  for (tab const& open : tabs_)
    if (open.document) open.document->lookForFile();
  auto modified = modifiedDocuments();
  std::erase(modified, except);
  if (modified.empty()) return true;
  if (modified.size() == 1) return askToSaveDocument(*modified.front());
  window().make_key_and_order_front();
  platform::alert const question{windows::unsaved_documents(modified.size()) +
                                     " Do you want to save these changes before closing?",
                                 "Your changes will be lost if you don't save them.",
                                 {"Save All", "Cancel", "Don't Save"},
                                 1};
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return std::all_of(modified.begin(), modified.end(),
                         [this](WynDocument* document) { return saveDocument(*document); });
    case 2:
      for (WynDocument* const document : modified) document->dropUnsavedText();
      return true;
    default:
      return false;
  }
}

bool WynProjectController::askToSaveProject() {
  if (isScratchProject_ || isUnreadable_) return true;
  if (!filename_.empty()) {
    if (writeToFile(filename_)) return true;
    platform::alert const anyway{"The project " + shown(filename_) + " is not saved.",
                                 "If you close it, its open tabs and the changes to its list of "
                                 "files are not remembered.",
                                 {"Close Anyway", "Cancel"},
                                 1};
    return platform::desktop::current().alerts().run(anyway) == 0;
  }
  if (tree_.roots().empty()) return true;
  platform::alert const question{
      "Do you want to save the project " + platform::quoted(displayName()) + "?",
      "The list of its files will be lost if you don't save it.",
      {"Save", "Cancel", "Don't Save"},
      1};
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return saveProjectAs();
    case 2:
      return true;
    default:
      return false;
  }
}

bool WynProjectController::windowShouldClose() {
  return askToSaveModifiedDocuments() && saveBeforeEnd();
}

// Also when the program ends, where windows aren't asked whether they close.
bool WynProjectController::saveBeforeEnd() {
  if (!askToSaveProject()) return false;
  keepSideBar();
  return true;
}

void WynProjectController::editProjectVariables() {
  std::optional<std::string> text = windows::shown_variables(contents_.variables);
  while (true) {
    text = platform::desktop::current().prompts().run(
        "Project Variables", "Variables of commands, as { NAME = \"value\"; }", *text);
    if (!text) return;
    if (auto edited = windows::edited_variables(*text, contents_.variables)) {
      contents_.variables = std::move(*edited);
      return;
    }
    tell("The Variables Can't Be Read",
         "They are names with values, such as { NAME = \"value\"; OTHER = \"2\"; }. Names consist "
         "of letters, digits and underscores.");
  }
}

bool WynProjectController::saveProject() {
  return filename_.empty() ? saveProjectAs() : writeToFile(filename_);
}

bool WynProjectController::saveProjectAs() {
  platform::save_request request;
  request.title = "Save Project As";
  request.directory = projectDirectory_.empty() ? owner().currentDirectory() : projectDirectory_;
  request.name = displayName() + ".qnproj";
  auto const answer = platform::desktop::current().panels().run_save(request);
  if (!answer) return false;
  std::string const path = path::standardize(answer->path);
  // The panel has asked whether what stands there may be replaced.
  if (path != filename_) version_.reset();
  isUnreadable_ = false;
  if (!writeToFile(path)) return false;
  if (path == filename_) return true;
  setFilename(path);
  owner().noteRecentFile(path);
  documentDidChange();
  return true;
}

bool WynProjectController::writeToFile(std::string const& path) {
  for (tab const& open : tabs_) keepMetaData(open);
  projects::project_contents written = {};
  written.variables = contents_.variables;
  written.window_frame = contents_.window_frame;
  written.shows_tree = side_.is_visible();
  written.tree_width = side_.width();
  // Of files that are no longer in the project nothing is kept.
  for (auto const& [file, metadata] : contents_.meta_data)
    if (tree_.holds_file(file)) written.meta_data[file] = metadata;
  for (tab const& open : tabs_)
    if (!open.path.empty()) written.open_documents.push_back(open.path);
  written.current_document = tabs_[selected_].path;
  std::string const folder = path::parent(path);
  auto const value = projects::project_value(
      written, tree_.roots(), projectDirectory_.empty() ? folder : projectDirectory_, folder);

  std::optional<path::known_file> known;
  if (path == filename_) known = path::known_file{version_, std::nullopt};
  std::optional<path::file_version> version;
  auto failure = projects::write_project_file(path, value, known, version);
  if (failure && failure->changed) {
    platform::alert const question{
        "The project " + shown(path) + " has been changed by another program.",
        "If you overwrite it, those changes will be lost.",
        {"Don't Overwrite", "Overwrite"}};
    if (platform::desktop::current().alerts().run(question) == 0) return false;
    failure = projects::write_project_file(path, value, std::nullopt, version);
  }
  if (failure && !failure->is_in_place) {
    tell("The project " + shown(path) + " could not be saved.", failure->message + ".");
    return false;
  }
  version_ = version;
  isScratchProject_ = isUnreadable_ = false;
  return true;
}

// The application becomes active.

void WynProjectController::windowDidBecomeKey() {
  if (used_at_) noteUse();
  document_window::windowDidBecomeKey();
  refresh();
}

void WynProjectController::refresh() {
  tree_.refresh([this] { closeTabsOfMissingFiles(); });
}

void WynProjectController::closeTabsOfMissingFiles() {
  for (std::size_t n = tabs_.size(); n-- > 0;) {
    tab const& open = tabs_[n];
    struct stat info;
    // Where there has never been a file, the document is one that is to be saved yet.
    bool const is_new = open.document && !open.document->fileModificationDate();
    bool const is_gone = !open.path.empty() && !is_new && ::stat(open.path.c_str(), &info) != 0 &&
                         (errno == ENOENT || errno == ENOTDIR);
    if (is_gone && (!open.document || !holds_unsaved_text(*open.document))) removeTab(n);
  }
}

// Commands.

std::string WynProjectController::findProjectDirectory() const {
  if (!isScratchProject_ && !projectDirectory_.empty()) return projectDirectory_;
  std::vector<std::string> folders, files;
  projects::visit_items(tree_.roots(), [&](projects::project_item& item) {
    if (item.kind() == projects::item_kind::folder) folders.push_back(item.path());
    if (item.kind() == projects::item_kind::file) files.push_back(item.path());
    return item.kind() == projects::item_kind::group;
  });
  if (folders.empty())
    for (std::string const& file : files) folders.push_back(path::parent(file));
  if (folders.empty()) return projectDirectory_;
  std::string common = folders.front();
  for (std::string const& folder : folders)
    while (common != "/" && folder != common && !folder.starts_with(common + "/"))
      common = path::parent(common);
  return common;
}

std::string WynProjectController::folderForNewFiles() const {
  std::string selected;
  projects::visit_items(tree_.roots(), [&](projects::project_item& item) {
    if (selected.empty() && item.is_selected)
      selected = item.kind() == projects::item_kind::file ? path::parent(item.path()) : item.path();
    return selected.empty();
  });
  if (!selected.empty()) return selected;
  if (std::string const& file = tabs_[selected_].path; !file.empty()) return path::parent(file);
  std::string const folder = findProjectDirectory();
  return folder.empty() ? document_window::folderForNewFiles() : folder;
}

plist::dictionary WynProjectController::environmentVariables() const {
  plist::dictionary result = document_window::environmentVariables();
  if (std::string const folder = findProjectDirectory(); !folder.empty())
    result["QN_PROJECT_DIRECTORY"] = path::standardize(folder);
  if (!filename_.empty()) result["QN_PROJECT_FILEPATH"] = filename_;
  std::string selected;
  projects::visit_items(tree_.roots(), [&](projects::project_item& item) {
    std::string const path = item.is_selected ? item.path() : "";
    if (path.empty()) return true;
    if (selected.empty()) result["QN_SELECTED_FILE"] = path;
    selected += (selected.empty() ? "" : " ") + in_shell_quotes(path);
    return true;
  });
  if (!selected.empty()) result["QN_SELECTED_FILES"] = selected;
  for (plist::value const& variable : contents_.variables)
    if (std::string const name = variable["variable"].string_or("");
        !name.empty() && variable["enabled"].boolean_or(false))
      result[name] = variable["value"].string_or("");
  return result;
}

bool WynProjectController::willExecuteCommand(commands::command_options const& command) {
  if (command.saves_all) saveAllDocuments();
  auto const& document = textDocument();
  bool const is_wanted =
      document->isDocumentEdited() && (!document->fileIsGone() || !document->storage().empty());
  if (command.saves_first && (is_wanted || document->filename().empty())) return saveDocument();
  return true;
}
