#include "app/AppDelegate.h"
#include "app/file_argument.h"
#include "app/offer_safety_copies.h"
#include "bundles/BundleManager.h"
#include "bundles/files/item_kinds.h"
#include "documents/WynDocument.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/scoped_value.h"
#include "platform/unicode.h"
#include "settings/store.h"
#include "windows/WynDocumentController.h"
#include "windows/WynProjectController.h"
#include "windows/large_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>

// How files, folders and projects get to windows.

namespace {

bool is_folder(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool is_project_file(std::string const& path) {
  std::string const extension = projects::extension_of(path);
  return (extension == "qnproj" || extension == "qnproject") && !is_folder(path);
}

WynProjectController* as_project(windows::document_window* window) {
  return dynamic_cast<WynProjectController*>(window);
}

}  // namespace

void AppDelegate::openLaunchArguments() {
  std::vector<app::file_argument> files;
  for (std::string const& argument : std::exchange(launchArguments_, {}))
    files.push_back(app::parse_file_argument(argument, currentDirectory_));
  openFiles(std::move(files));
}

// By its name alone, so that opening any other file doesn't load the bundles.
bool AppDelegate::installIfBundle(std::string const& path) {
  return bundles::is_bundle_file(path) && BundleManager::sharedInstance().canHandleFile(path);
}

void AppDelegate::openFiles(std::vector<std::string> const& paths) {
  std::vector<app::file_argument> files;
  for (std::string const& path : paths) files.push_back({path});
  openFiles(std::move(files));
}

void AppDelegate::openFiles(std::vector<app::file_argument> files,
                            app::open_options const& options) {
  platform::scoped_value const opening(openOptions_, options);
  std::vector<app::file_argument> rest;
  for (app::file_argument& file : files) {
    file.path = path::resolve(file.path);
    // With a line, the file is wanted as text.
    if (!file.place && installIfBundle(file.path)) continue;
    if (!file.place && is_project_file(file.path))
      openProject(file.path);
    else
      rest.push_back(std::move(file));
  }
  bool const has_folder =
      std::any_of(rest.begin(), rest.end(), [](auto const& file) { return is_folder(file.path); });
  bool const together = rest.size() > 1 && !options.in_new_window &&
                        settings::store().boolean("WynOpenFilesTogether");
  if (has_folder || together) return openTogether(rest);
  for (app::file_argument const& file : rest) openFile(file.path, file.place);
}

void AppDelegate::openProject(std::string const& path) {
  for (windows::document_window* const open : orderedControllers())
    if (auto* const project = as_project(open); project && project->filename() == path)
      return project->showWindow();
  WynProjectController& project = newProjectWindow();
  project.initWithContentsOfFile(path);
  addToRecent(path);
  project.showWindow();
  closeUnusedWindow();
}

// Files and folders are in one project for the moment, unless all of the files are in open windows
// or are files of their projects.
void AppDelegate::openTogether(std::vector<app::file_argument> const& files) {
  std::vector<std::string> folders, items;
  for (app::file_argument const& file : files)
    if (is_folder(file.path)) folders.push_back(file.path);
  items = folders;
  for (app::file_argument const& file : files) {
    bool const is_within = std::any_of(folders.begin(), folders.end(), [&](auto const& folder) {
      return file.path == folder || file.path.starts_with(folder == "/" ? folder : folder + "/");
    });
    if (!is_within && (!folders.empty() || windowWithFile(file.path) == nullptr))
      items.push_back(file.path);
  }
  WynProjectController* project = nullptr;
  if (items.size() > 1 || !folders.empty()) {
    for (windows::document_window* const open : orderedControllers())
      if (auto* const other = as_project(open);
          other && other->isScratchProject() && other->openedItems() == items)
        project = other;
    if (project == nullptr) {
      project = &newProjectWindow();
      project->initWithFiles(items);
    }
    for (std::string const& folder : folders) addToRecent(folder);
    project->showWindow();
    closeUnusedWindow();
  }
  for (app::file_argument const& file : files)
    if (!is_folder(file.path)) openFile(file.path, file.place, project);
}

// The window where a file is opened in the place of one of its own: it is there already, or is a
// file of its project.
windows::document_window* AppDelegate::windowWithFile(std::string const& path) {
  auto const open = orderedControllers();
  auto const first = [&](auto const& has_it) -> windows::document_window* {
    auto const found = std::find_if(open.begin(), open.end(), has_it);
    return found == open.end() ? nullptr : *found;
  };
  if (auto* const window = first([&](windows::document_window* each) {
        return as_project(each) == nullptr && each->textDocument() != nullptr &&
               each->textDocument()->filename() == path;
      }))
    return window;
  if (auto* const window = first([&](windows::document_window* each) {
        return as_project(each) != nullptr && as_project(each)->hasTabOf(path);
      }))
    return window;
  return first([&](windows::document_window* each) {
    return as_project(each) != nullptr && as_project(each)->holdsFile(path);
  });
}

// In `wanted`, unless another window has it or its project; without one in a window of its own.
windows::document_window* AppDelegate::openFile(std::string const& path,
                                                std::optional<text::line_place> const& place,
                                                WynProjectController* wanted) {
  auto const go = [&](windows::document_window& controller) {
    if (place) controller.textView().goToLineAndColumn(*place);
    controller.showWindow();
    return &controller;
  };
  std::string const standard = path::resolve(path);
  windows::document_window* window = windowWithFile(standard);
  if (window == nullptr) window = wanted;
  WynProjectController* const project = as_project(window);
  bool const is_open = window != nullptr && (project == nullptr || project->hasTabOf(standard));
  if (!is_open && !windows::confirm_large_file(standard)) return nullptr;
  if (project != nullptr && !project->openFile(standard)) return nullptr;
  if (is_open) return go(*window);
  if (window == nullptr) {
    std::shared_ptr<WynDocument> const document = WynDocument::documentWithContentsOfFile(standard);
    if (document == nullptr) return nullptr;
    window = openOptions_.in_new_window ? &newWindow(document) : &show(document);
    document->setHideFromRecentMenu(!openOptions_.adds_to_recent);
  }
  addToRecent(standard);
  go(*window);
  postWhileAlive([this, standard] { app::offer_safety_copies_beside(*this, standard); });
  return window;
}

void AppDelegate::addToRecent(std::string const& path) {
  if (openOptions_.adds_to_recent) recent_.add(path);
}

windows::document_window* AppDelegate::windowOfDocument(WynDocument const& document) const {
  for (windows::document_window* const window : orderedControllers())
    for (auto const& each : window->documents())
      if (each.get() == &document) return window;
  return nullptr;
}

std::shared_ptr<WynDocument> AppDelegate::documentOfFile(std::string const& path) const {
  std::string const standard = path::resolve(path);
  for (windows::document_window* const window : orderedControllers())
    for (auto const& each : window->documents())
      if (each->filename() == standard) return each;
  return nullptr;
}

void AppDelegate::openRecentFile(std::string const& path) {
  if (path::exists(path)) {
    openFiles(std::vector{path});
    return;
  }
  platform::alert const question{
      "Couldn't Open",
      "The file or folder " +
          documents::quoted(documents::printable(path::abbreviate_with_tilde(path))) +
          " was deleted or moved, or can't be reached now.",
      {"Continue", "Remove from Menu"}};
  if (platform::desktop::current().alerts().run(question) == 1) recent_.remove(path);
}

windows::document_window& AppDelegate::show(std::shared_ptr<WynDocument> document) {
  // Of several empty windows the hindmost is taken.
  auto const open = orderedControllers();
  auto const reused = std::find_if(open.rbegin(), open.rend(),
                                   [](auto const* c) { return c->canBeUsedForNewDocument(); });
  if (reused != open.rend()) {
    static_cast<WynDocumentController&>(**reused).setTextDocument(std::move(document));
    return **reused;
  }
  return newWindow(std::move(document));
}

// The hindmost of them, when a project takes its place.
void AppDelegate::closeUnusedWindow() {
  auto const open = orderedControllers();
  auto const unused = std::find_if(open.rbegin(), open.rend(),
                                   [](auto const* c) { return c->canBeUsedForNewDocument(); });
  if (unused != open.rend()) (*unused)->window().close();
}

void AppDelegate::newDocument() {
  newWindow(WynDocument::document()).showWindow();
}

windows::document_window& AppDelegate::newWindow(std::shared_ptr<WynDocument> document) {
  auto controller = std::make_unique<WynDocumentController>(*this);
  controller->setTextDocument(std::move(document));
  windows::document_window& result = *controller;
  place(result);
  adopt(std::move(controller));
  return result;
}

void AppDelegate::place(windows::document_window& controller) const {
  if (!settings::store().boolean("WynWindowPlacementKept")) return;
  auto const open = orderedControllers();
  controller.window().set_placement(open.empty() ? settings::store().string("WynWindowPlacement")
                                                 : open.front()->window().placement());
}

void AppDelegate::showInNewWindow(std::shared_ptr<WynDocument> document) {
  newWindow(std::move(document)).showWindow();
}

WynProjectController& AppDelegate::newProjectWindow() {
  auto controller = std::make_unique<WynProjectController>(*this);
  WynProjectController& result = *controller;
  place(result);
  adopt(std::move(controller));
  return result;
}

void AppDelegate::newProject() {
  newProjectWindow().showWindow();
}

void AppDelegate::openDocument() {
  platform::open_request request;
  request.title = "Quirnote: Open";
  auto const open = orderedControllers();
  std::string const file = open.empty() ? "" : open.front()->textDocument()->filename();
  request.directory = file.empty() ? currentDirectory_ : path::parent(file);
  openFiles(platform::desktop::current().panels().run_open(request));
}

void AppDelegate::openFolder() {
  platform::open_request request;
  request.title = "Quirnote: Open Folder";
  request.directory = currentDirectory_;
  request.only_folders = true;
  request.allows_multiple = false;
  openFiles(platform::desktop::current().panels().run_open(request));
}
