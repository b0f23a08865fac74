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

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr std::size_t most_closed = 50;  // tabs that can come back

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
      tree_(platform::desktop::current().loop(), platform::desktop::current().files()) {
  tree_.unsaved_files = [this] {
    std::vector<std::string> paths;
    for (WynDocument const* document : modifiedDocuments())
      if (holds_unsaved_text(*document)) paths.push_back(document->filename());
    return paths;
  };
  addProjectMethods();
  tabs_.push_back(newTab(""));
  selectTab(0);
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
  add("performCloseTab:", [this](auto const&) { return performCloseTab(selected_), true; });
  add("performCloseAllTabs:", [this](auto const&) { return performCloseAllTabs(), true; });
  add("reopenClosedTab:", [this](auto const&) { return reopenClosedTab(); });
  add("goToNextFile:", [this](auto const&) { return goToNextFile(1); });
  add("goToPreviousFile:", [this](auto const&) { return goToNextFile(-1); });
  add("goToFileCounterpart:", [this](auto const&) { return goToFileCounterpart(); });
  add("selectItem:",
      [this, path_in](plist::value const& path) { return selectItem(path_in(path)); });
  add("toggleTreatFileAsText:", [this, path_in](plist::value const& path) {
    std::string const given = path_in(path);
    toggleTreatFileAsText(given.empty() ? tabs_[selected_].path : given);
    return true;
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
  documentDidChange();
}

void WynProjectController::initWithFiles(std::vector<std::string> paths) {
  isScratchProject_ = true;
  plist::SortArrayLexicographically(paths);
  struct stat info;
  bool const is_folder =
      paths.size() == 1 && ::stat(paths.front().c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  if (!paths.empty()) projectDirectory_ = is_folder ? paths.front() : common_folder(paths);
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
}

// Tabs.

std::string WynProjectController::titleOfTab(std::size_t index) const {
  tab const& of = tabs_[index];
  return of.document ? of.document->displayName() : documents::printable_name(of.path);
}

WynProjectController::tab WynProjectController::newTab(std::string path) {
  tab made;
  made.path = std::move(path);
  if (made.path.empty()) adopt(made, WynDocument::document());
  return made;
}

void WynProjectController::adopt(tab& into, std::shared_ptr<WynDocument> document) {
  auto& center = platform::notification_center::standard();
  into.document = std::move(document);
  into.document->openDocument();
  into.edited = center.observe(
      WynDocument::documentEditedDidChange, [this](auto const&) { documentDidChange(); },
      into.document.get());
  into.renamed = center.observe(
      WynDocument::filenameDidChange,
      [this, renamed = into.document.get()](auto const&) { documentWasRenamed(*renamed); },
      into.document.get());
  if (auto const kept = contents_.meta_data.extract(into.path); !kept.empty())
    into.document->setMetaData(kept.mapped());
}

void WynProjectController::documentWasRenamed(WynDocument const& document) {
  for (tab& open : tabs_)
    if (open.document.get() == &document) open.path = document.filename();
}

WynProjectController::tab* WynProjectController::tabWithPath(std::string const& path) {
  auto const found =
      std::find_if(tabs_.begin(), tabs_.end(), [&](tab const& open) { return open.path == path; });
  return found == tabs_.end() || path.empty() ? nullptr : &*found;
}

std::shared_ptr<WynDocument> WynProjectController::documentOfTab(tab& of) {
  if (of.document) return of.document;
  auto document = WynDocument::documentWithContentsOfFile(of.path);
  if (document) adopt(of, std::move(document));
  return of.document;
}

std::shared_ptr<WynDocument> WynProjectController::documentForItem(std::string const& path) {
  tab* open = tabWithPath(path);
  bool const is_new = open == nullptr;
  tab made;
  if (is_new) made = newTab(path);
  auto document = documentOfTab(is_new ? made : *open);
  if (is_new && document) tabs_.push_back(std::move(made));
  return document;
}

bool WynProjectController::canOpenFile(std::string const& path) const {
  return projects::can_open_file(path, textFileRules());
}

projects::text_file_rules WynProjectController::textFileRules() {
  std::set<std::string, std::less<>> extensions;
  for (plist::value const& language : BundleManager::sharedInstance().languages())
    for (plist::value const& type : language["fileTypes"].elements())
      // Those with a dot are whole names.
      if (std::string const name = type.string_or(""); name.find('.') == name.npos)
        extensions.insert(projects::extension_of("x." + name));
  extensions.erase("");
  return projects::text_file_rules::standard(std::move(extensions));
}

void WynProjectController::toggleTreatFileAsText(std::string const& path) {
  projects::toggle_treated_as_text(path, textFileRules());
}

bool WynProjectController::selectItem(std::string const& given) {
  if (given.empty()) return false;
  std::string const path = path::standardize(given);
  if (tabWithPath(path) == nullptr) {
    if (!canOpenFile(path)) return false;
    tab const& only = tabs_.front();
    bool const takes_place = tabs_.size() == 1 && only.path.empty() &&
                             only.document->storage().empty() &&
                             !only.document->isDocumentEdited() && !textView().isPlayingMacro();
    if (documentForItem(path) == nullptr) return false;
    if (takes_place) {
      selectTab(1);
      removeTab(0);
    }
  }
  auto const at = static_cast<std::size_t>(tabWithPath(path) - tabs_.data());
  if (documentOfTab(tabs_[at]) == nullptr) return false;
  selectTab(at);
  return true;
}

void WynProjectController::selectTab(std::size_t index) {
  if (index >= tabs_.size()) return;
  auto const document = documentOfTab(tabs_[index]);
  if (document == nullptr) return;
  selected_ = index;
  if (auto* const item = tree_.item_with_path(tabs_[index].path); item && item->own())
    item->own()->last_used =
        plist::date{static_cast<double>(std::time(nullptr)) - 978307200};  // since 2001
  if (document != textDocument()) showDocument(document);
}

void WynProjectController::moveTab(std::size_t from, std::size_t to) {
  if (from >= tabs_.size() || to >= tabs_.size()) return;
  auto const begin = tabs_.begin();
  auto const at = [&](std::size_t n) { return begin + static_cast<std::ptrdiff_t>(n); };
  if (from < to)
    std::rotate(at(from), at(from + 1), at(to + 1));
  else
    std::rotate(at(to), at(from), at(from + 1));
  if (selected_ == from)
    selected_ = to;
  else if (from < selected_ && selected_ <= to)
    --selected_;
  else if (to <= selected_ && selected_ < from)
    ++selected_;
}

void WynProjectController::keepMetaData(tab const& of) {
  if (of.path.empty() || !of.document) return;
  if (of.document == textDocument()) textView().snapshotMetaData();
  if (plist::value const metadata = of.document->metaData(); metadata.as_dictionary())
    contents_.meta_data[of.path] = metadata;
}

// Without a question.
void WynProjectController::removeTab(std::size_t index) {
  tab const removed = std::move(tabs_[index]);
  keepMetaData(removed);
  tabs_.erase(tabs_.begin() + static_cast<std::ptrdiff_t>(index));
  if (!removed.path.empty()) {
    std::erase(closed_, removed.path);
    closed_.push_back(removed.path);
    if (closed_.size() > most_closed) closed_.erase(closed_.begin());
  }
  if (tabs_.empty()) tabs_.push_back(newTab(""));
  if (index < selected_) --selected_;
  selected_ = std::min(selected_, tabs_.size() - 1);
  // A file that can't be read any more is passed over.
  if (removed.document == textDocument()) {
    selectTab(selected_);
    if (removed.document == textDocument()) {
      tabs_.push_back(newTab(""));
      selectTab(tabs_.size() - 1);
    }
  }
  if (removed.document) removed.document->closeDocument();
}

bool WynProjectController::performCloseTab(std::size_t index) {
  if (index >= tabs_.size()) return false;
  auto const document = tabs_[index].document;
  if (document && document->isDocumentEdited()) selectTab(index);
  if (document && !askToSaveDocument(*document)) return false;
  // The question may have given it another name, or others another place.
  auto const at = std::find_if(tabs_.begin(), tabs_.end(), [&](tab const& open) {
    return document ? open.document == document : &open == &tabs_[index];
  });
  if (at == tabs_.end()) return false;
  removeTab(static_cast<std::size_t>(at - tabs_.begin()));
  return true;
}

bool WynProjectController::performCloseAllTabs() {
  if (!askToSaveModifiedDocuments()) return false;
  selectTab(tabs_.size() - 1);
  while (tabs_.size() > 1) removeTab(0);
  removeTab(0);
  return true;
}

bool WynProjectController::reopenClosedTab() {
  while (!closed_.empty()) {
    std::string const path = std::move(closed_.back());
    closed_.pop_back();
    if (path::exists(path) && selectItem(path)) return true;
  }
  return false;
}

bool WynProjectController::goToNextFile(int step) {
  std::size_t const count = tabs_.size();
  if (count < 2) return false;
  selectTab((selected_ + count + static_cast<std::size_t>(step)) % count);
  return true;
}

bool WynProjectController::goToFileCounterpart() {
  std::string const path = tabs_[selected_].path;
  if (path.empty()) return false;
  std::string const name = path::name(path), stem = without_extension(name);
  std::string const folder = path::parent(path);
  std::vector<std::string> names;
  for (dirent const* entry : path::entries(folder))
    if (std::string const other = entry->d_name;
        other == name ||
        (without_extension(other) == stem && canOpenFile(path::join(folder, other))))
      names.push_back(other);
  std::sort(names.begin(), names.end());
  plist::SortArrayLexicographically(names);
  auto const at = std::find(names.begin(), names.end(), name);
  if (names.size() < 2 || at == names.end()) return false;
  std::rotate(names.begin(), at, names.end());
  return selectItem(path::join(folder, names[1]));
}

// Saving and closing.

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

bool WynProjectController::askToSaveModifiedDocuments() {
  for (tab const& open : tabs_)
    if (open.document) open.document->lookForFile();
  auto const modified = modifiedDocuments();
  if (modified.empty()) return true;
  if (modified.size() == 1) return askToSaveDocument(*modified.front());
  window().make_key_and_order_front();
  platform::alert const question{"You have " + std::to_string(modified.size()) +
                                     " documents with unsaved changes. Do you want to save these "
                                     "changes before closing?",
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
  if (!filename_.empty()) return writeToFile(filename_);
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
  return askToSaveModifiedDocuments() && askToSaveProject();
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
  written.shows_tree = contents_.shows_tree;
  written.tree_width = contents_.tree_width;
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
    bool const is_gone = !open.path.empty() && ::stat(open.path.c_str(), &info) != 0 &&
                         (errno == ENOENT || errno == ENOTDIR);
    if (!is_gone) continue;
    if (!open.document || !holds_unsaved_text(*open.document)) removeTab(n);
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

plist::dictionary WynProjectController::environmentVariables() const {
  plist::dictionary result;
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
