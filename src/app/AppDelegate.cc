#include "app/AppDelegate.h"

#include "actions/WynPasteboardManager.h"
#include "app/dynamic_items.h"
#include "app/file_argument.h"
#include "app/line_place.h"
#include "app/link_tool.h"
#include "app/offer_safety_copies.h"
#include "app/select_from_list.h"
#include "bundles/BundleManager.h"
#include "bundles/files/item_kinds.h"
#include "commands/environment.h"
#include "commands/output_results.h"
#include "documents/WynDocument.h"
#include "documents/file_text.h"
#include "documents/printable_name.h"
#include "keys/WynKeyBindingManager.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/scoped_value.h"
#include "platform/utf.h"
#include "search/WynFindManager.h"
#include "settings/store.h"
#include "styles/WynThemeManager.h"
#include "windows/WynProjectController.h"
#include "windows/document_window.h"
#include "windows/select_item.h"
#include "windows/template_files.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

namespace {

constexpr double defaults_period = 1;     // seconds between looks at the defaults file
constexpr double clipboard_delay = 0.05;  // seconds

}  // namespace

AppDelegate::AppDelegate(plist::value menus, std::string const& recent_list, output_taker taker)
    : outputTaker_(std::move(taker)),
      menus_(std::move(menus)),
      recent_(recent_list),
      clips_(recent_list.empty() ? "" : path::parent(recent_list) + "/ClipboardHistory.plist") {
  if (!outputTaker_)
    htmlOutputs_ = std::make_unique<windows::html_outputs>(
        *this, [this](auto const& place) { openPlace(place); });
  auto const add = [this](char const* selector, std::function<void(plist::value const&)> action) {
    addMethod(selector, [action = std::move(action)](plist::value const& argument) {
      action(argument);
      return plist::value();
    });
  };
  add("newDocument:", [this](auto const&) { newDocument(); });
  addMethod("newDocumentFromTemplate:", [this](plist::value const& uuid) {
    return plist::value(newDocumentFromTemplate(uuid.string_or("")));
  });
  addMethod("newFileFromTemplate:", [this](plist::value const& uuid) {
    return plist::value(newFileFromTemplate(uuid.string_or("")));
  });
  // Views perform it themselves; without a window there are templates still.
  addMethod("executeBundleItem:", [this](plist::value const& uuid) {
    return plist::value(
        BundleManager::sharedInstance().executeItemWithUUID(uuid.string_or(""), *this));
  });
  add("newProject:", [this](auto const&) { newProject(); });
  add("openDocument:", [this](auto const&) { openDocument(); });
  add("openFolder:", [this](auto const&) { openFolder(); });
  add("openRecentFile:", [this](plist::value const& path) {
    if (auto const* bytes = path.as_data()) openRecentFile({bytes->begin(), bytes->end()});
  });
  add("reloadBundles:", [](auto const&) {
    // The user has perhaps changed files in a way that the index doesn't see.
    BundleManager::sharedInstance().cache().flush();
    BundleManager::sharedInstance().reloadBundles();
    WynThemeManager::sharedInstance().reloadThemes();
  });
  add("clearRecentFiles:", [this](auto const&) { recent_.clear(); });
  add("orderFrontGoToLinePanel:", [this](auto const&) { orderFrontGoToLinePanel(); });
  add("selectBundleItemFromList:", [this](auto const&) { selectBundleItem(false); });
  add("selectBundleItemByKey:", [this](auto const&) { selectBundleItem(true); });
  add("goToFile:", [this](auto const&) { goTo(""); });
  add("selectFromList:", [this](plist::value const& name) {
    WynTextView* const view = frontTextView();
    if (view == nullptr) return platform::desktop::current().beep();
    std::string const list = name.string_or("");
    if (list == "symbols") return goTo("@");
    app::select_from_list(list, list == "languages" ? dynamicItems(list) : listItems(list), *view);
  });
  addMethod("goToLineAction:", [this](plist::value const& place) {
    return plist::value(goToLine(place.string_or("")));
  });
  add("offerSafetyCopies:", [this](auto const&) { app::offer_safety_copies(*this); });
  add("orderFrontFindPanel:", [](plist::value const& field) {
    WynFindManager::sharedInstance().orderFrontFindPanel(field.integer_or(0) == 1);
  });
  add("orderFrontFindInProjectPanel:", [this](auto const&) { findInProject().orderFront(); });
  addMethod("writeBackResults:",
            [this](auto const&) { return plist::value(findInProject().writeBack()); });
  addMethod("canWriteBackResults",
            [this](auto const&) { return plist::value(findInProject().canWriteBack()); });
  addMethod("performFindAction:", [this](plist::value const& tag) {
    WynTextView* const view = frontTextView();
    if (view == nullptr) return plist::value(false);
    WynFindManager::sharedInstance().performFindAction(
        *view, static_cast<platform::find_action>(tag.integer_or(0)), 0);
    return plist::value();
  });
  addThemeMethods();
  addClipboardMethods();
  addResultMethods();
  addHelpMethods();
  WynFindManager::sharedInstance().setMainView([this] { return frontTextView(); });
  add("selectNextWindow:", [this](auto const&) { selectWindow(1); });
  add("selectPreviousWindow:", [this](auto const&) { selectWindow(-1); });
  // Where a window has one document, the next one is in another window.
  add("goToNextFile:", [this](auto const&) { selectWindow(1); });
  add("goToPreviousFile:", [this](auto const&) { selectWindow(-1); });
  for (char const* const selector : {"goToNextUsedFile:", "goToPreviousUsedFile:"})
    add(selector, [this](auto const&) {
      if (auto const open = orderedControllers(); open.size() > 1) open[1]->showWindow();
    });
  add("terminate:", [this](auto const&) { terminate(); });
}

void AppDelegate::addThemeMethods() {
  addMethod("takeThemeFrom:", [](plist::value const& uuid) {
    return plist::value(WynThemeManager::sharedInstance().selectTheme(uuid.string_or("")));
  });
  addMethod("takeThemeFromIsChecked:", [](plist::value const& uuid) {
    auto& manager = WynThemeManager::sharedInstance();
    auto const* const selected = manager.selectedTheme();
    return plist::value(!manager.followsDesktop() && selected != nullptr &&
                        selected->uuid() == uuid.string_or(""));
  });
  addMethod("toggleThemeFollowsDesktop:", [](plist::value const&) {
    auto& manager = WynThemeManager::sharedInstance();
    manager.setFollowsDesktop(!manager.followsDesktop());
    return plist::value();
  });
  addMethod("toggleThemeFollowsDesktopIsChecked:", [](plist::value const&) {
    return plist::value(WynThemeManager::sharedInstance().followsDesktop());
  });
}

void AppDelegate::addClipboardMethods() {
  addMethod("clearPasteboardHistory:", [this](plist::value const&) {
    WynPasteboardManager::sharedInstance().clear();
    clips_.save();
    return plist::value();
  });
  addMethod("canClearPasteboardHistory", [](plist::value const&) {
    return plist::value(!WynPasteboardManager::sharedInstance().stack().empty());
  });
}

void AppDelegate::addResultMethods() {
  using results = commands::output_results;
  using step = commands::output_place const* (results::*)();
  auto const add = [this](char const* selector, step go) {
    addMethod(selector, [this, go](plist::value const&) {
      if (findInProject_ != nullptr && findInProject_->isWalked())
        return plist::value(findInProject_->step(go == &results::previous));
      auto const* const place = (results::shared().*go)();
      if (place != nullptr) openPlace(*place);
      return plist::value(place != nullptr);
    });
  };
  add("selectNextResult:", &results::next);
  add("selectPreviousResult:", &results::previous);
  auto const has_results = [this](auto const&) {
    bool const is_walked = findInProject_ != nullptr && findInProject_->isWalked();
    return plist::value(is_walked || !results::shared().is_empty());
  };
  addMethod("canSelectNextResult", has_results);
  addMethod("canSelectPreviousResult", has_results);
}

windows::find_in_project& AppDelegate::findInProject() {
  auto const front = []() -> windows::document_window* {
    for (platform::window* const window : platform::desktop::current().ordered_windows())
      if (auto* const found = dynamic_cast<windows::document_window*>(window->delegate()))
        return found;
    return nullptr;
  };
  auto const open = [this](std::string const& path) -> windows::document_window* {
    return openFile(path, std::nullopt);
  };
  auto const open_text = [this](text::text_block const& text) -> windows::document_window& {
    return showText(text);
  };
  if (findInProject_ == nullptr)
    findInProject_ = std::make_unique<windows::find_in_project>(
        windows::find_in_project::owner{.front = front, .open = open, .open_text = open_text});
  return *findInProject_;
}

void AppDelegate::openPlace(commands::output_place const& place) {
  bool const has_line = place.line != 0;
  openFile(place.file,
           has_line ? std::optional(text::line_place{place.line, place.column}) : std::nullopt);
}

// A moment later, so that the window is seen at once, and only if the program that has the
// clipboard answers.
void AppDelegate::applicationDidBecomeActive() {
  clipboardTimer_ = platform::desktop::current().loop().schedule(clipboard_delay, false, [] {
    platform::desktop::current().general_pasteboard().when_answered(
        [] { WynPasteboardManager::sharedInstance().checkClipboard(); });
  });
}

void AppDelegate::applicationWillResignActive() {
  clips_.save();
  if (!settings::store().boolean("WynSaveAllOnDeactivate")) return;
  for (std::size_t n = 0; n < controllers_.size(); ++n) controllers_[n]->saveQuietly();
}

AppDelegate::~AppDelegate() {
  findInProject_.reset();
  clips_.save();
  WynFindManager::sharedInstance().setMainView({});
}

void AppDelegate::postWhileAlive(std::function<void()> work) {
  platform::desktop::current().waits().post(lives_, std::move(work));
}

void AppDelegate::setLaunchArguments(std::vector<std::string> arguments, std::string directory) {
  launchArguments_ = std::move(arguments);
  currentDirectory_ = std::move(directory);
}

void AppDelegate::didFinishLaunching() {
  auto& defaults = settings::store();
  defaultsTimer_ = platform::desktop::current().loop().schedule(
      defaults_period, true, [&defaults] { defaults.check_for_changes(); });
  damagedDefaults_ = platform::notification_center::standard().observe(
      platform::user_defaults::did_set_aside,
      [this](platform::notification const& n) { tellOfDamagedDefaults(n.info); }, &defaults);
  clips_.load();
  WynFindManager::sharedInstance().restoreFindString();
  applicationDidBecomeActive();
  openLaunchArguments();
  if (requests_.open_all) requests_.open_all();
  bundleWatcher_ = std::make_unique<bundles::bundle_watcher>(BundleManager::sharedInstance());
  themeWatcher_ = std::make_unique<styles::theme_watcher>(WynThemeManager::sharedInstance());
  bool const wanted = defaults.string("WynAppDelegateOpenUntitledDocument") != "never";
  if (controllers_.empty() && wanted) newDocument();
  postWhileAlive([this] {
    if (!menuFault_.empty())
      platform::desktop::current().alerts().run({"Menus Missing", menuFault_, {"Continue"}});
    app::offer_safety_copies(*this);
    app::update_link_to_tool();
  });
}

// Later, since settings are also stored where nothing may be asked, such as at the end.
void AppDelegate::tellOfDamagedDefaults(plist::value const& info) {
  auto const shown = [&](char const* key) {
    return documents::printable(path::abbreviate_with_tilde(info[key].string_or("")));
  };
  platform::alert const message{"Settings Were Damaged",
                                "The settings in " + shown("path") + " could not be read (" +
                                    info["reason"].string_or("") +
                                    "). New ones have been written, and the damaged file is kept "
                                    "as " +
                                    shown("kept") + ".",
                                {"Continue"}};
  postWhileAlive([message] { platform::desktop::current().alerts().run(message); });
}

bool AppDelegate::shouldSwallowEvent(platform::key_event const& event) {
  WynTextView* const view = frontTextView();
  if (view == nullptr || !BundleManager::sharedInstance().shouldSwallowEvent(event, *view))
    return false;
  view->forgetPendingKeys();
  return true;
}

plist::dictionary AppDelegate::environmentVariables() const {
  plist::dictionary result;
  std::string const support = BundleManager::sharedInstance().folders().supportPath();
  if (!support.empty()) {
    result.insert_or_assign("QN_SUPPORT_PATH", support);
    std::string const bash_init = path::join(support, "lib/bash_init.sh");
    if (path::exists(bash_init)) result.insert_or_assign("BASH_ENV", bash_init);
  }
  if (BundleItem const* const item = BundleManager::sharedInstance().currentBundleItem()) {
    result.insert_or_assign("QN_BUNDLE_PATH", item->bundlePath());
    if (std::string const own = item->supportPath(); !own.empty())
      result.insert_or_assign("QN_BUNDLE_SUPPORT", own);
  }
  return result;
}

// Where the panel says, which has asked before it replaces a file.
bool AppDelegate::newFileFromTemplate(std::string const& uuid) {
  auto const item = BundleManager::sharedInstance().bundleItemForUUID(uuid);
  if (item == nullptr || item->kind() != bundles::item_kind::file_template) return false;
  auto const open = orderedControllers();
  std::string const extension = item->content()["extension"].string_or("");
  platform::save_request request;
  request.title = "New File From Template: " + item->name();
  request.directory = open.empty() ? currentDirectory_ : open.front()->folderForNewFiles();
  request.name = extension.empty() ? "untitled" : "untitled." + extension;
  auto const place = platform::desktop::current().panels().run_save(request);
  if (!place) return true;
  for (std::string const& path : filesOfTemplate(*item, place->path)) openFile(path);
  return true;
}

// Without any, the user has seen why.
std::vector<std::string> AppDelegate::filesOfTemplate(BundleItem& item, std::string const& path) {
  WynTextView* const view = frontTextView();
  auto files = windows::files_for_template(
      item, path,
      commands::environment_for(view != nullptr ? static_cast<platform::responder*>(view) : this));
  if (files.paths.empty())
    platform::desktop::current().alerts().run(
        {"The Template Created No File", item.name() + ": " + files.error, {"Continue"}});
  for (std::size_t n = files.missing; n > 0 && !files.paths.empty(); --n)
    platform::desktop::current().beep();
  return std::move(files.paths);
}

bool AppDelegate::newDocumentFromTemplate(std::string const& uuid) {
  auto const item = BundleManager::sharedInstance().bundleItemForUUID(uuid);
  if (item == nullptr || item->kind() != bundles::item_kind::file_template) return false;
  windows::temporary_document place(item->content()["extension"].string_or(""));
  if (place.path().empty()) return false;
  auto const files = filesOfTemplate(*item, place.path());
  if (files.empty()) return true;
  if (files.size() > 1) {
    place.keep();
    for (std::string const& path : files) openFile(path);
    return true;
  }
  return showAsNewDocument(files.front());
}

// Its name and first line determine the language, but the document has no file.
bool AppDelegate::showAsNewDocument(std::string const& path) {
  documents::file_text read;
  if (documents::read_file_text(path, encoding::UTF8, true, read)) return false;
  text::unit_view const units = read.units.view();
  std::string const first_line =
      unicode::to_utf8(units.substr(0, std::min(units.find(u'\n'), units.size())));
  windows::document_window& controller = showText(read.units);
  WynTextView& view = controller.textView();
  view.changeLanguageToAndLearn(view.languageChoiceForFileWithFirstLine(path, first_line), false);
  controller.showWindow();
  return true;
}

windows::document_window& AppDelegate::showText(text::text_block const& text) {
  auto storage = std::make_unique<text::storage>();
  storage->insert(storage->end(-1), text);
  storage->forget_history();
  return show(std::make_shared<WynDocument>(std::move(storage)));
}

void AppDelegate::openAsNewDocument(text::text_block const& text) {
  showText(text).showWindow();
}

WynTextView* AppDelegate::frontTextView() const {
  auto const open = orderedControllers();
  if (open.empty() || open.front()->textView().view() == nullptr) return nullptr;
  return &open.front()->textView();
}

void AppDelegate::orderFrontGoToLinePanel() {
  auto const open = orderedControllers();
  text::view const* const view = open.empty() ? nullptr : open.front()->textView().view();
  if (view == nullptr) return platform::desktop::current().beep();
  auto const place = platform::desktop::current().prompts().run(
      "Go to Line", "Line, or line and column as LINE:COLUMN",
      std::to_string(view->selection.current_mark.base.line + 1));
  if (place) performSelectorWithObject("goToLineAction:", *place);
}

std::vector<platform::menu_item> AppDelegate::menusOfActions() const {
  std::function<void(std::vector<platform::menu_item>&)> const fill = [&](auto& items) {
    for (platform::menu_item& item : items) {
      fill(item.items);
      // Items of bundles are found as such.
      if (!item.dynamic.empty() && item.dynamic != "bundles")
        item.items = dynamicItems(item.dynamic);
    }
  };
  auto menus = mainMenu();
  platform::menu_item view, languages;
  view.title = "View";
  languages.title = "Language";
  languages.dynamic = "languages";
  view.items = {languages};
  menus.push_back(view);
  for (platform::menu_item& item : actionsWithoutMenu()) menus.push_back(std::move(item));
  fill(menus);
  return menus;
}

void AppDelegate::selectBundleItem(bool by_key) {
  WynTextView* const view = frontTextView();
  if (view == nullptr) return platform::desktop::current().beep();
  WynSelectBundleItem select(BundleManager::sharedInstance(), *view, menusOfActions(),
                             WynKeyBindingManager::sharedInstance().keyBindings(), by_key);
  auto const row = platform::desktop::current().pickers().run(select.request(), select);
  if (row && !select.accept(row->row)) platform::desktop::current().beep();
}

std::vector<platform::menu_item> AppDelegate::listItems(std::string const& name) const {
  return platform::menu_from_value(menus_["lists"][name]);
}

bool AppDelegate::goToLine(std::string const& text) {
  auto const place = app::parse_line_place(text);
  auto const open = orderedControllers();
  if (!place || open.empty()) return false;
  // By names, so that a macro has it.
  WynTextView& view = open.front()->textView();
  auto const go = [&view](char const* selector, std::size_t number) {
    if (number > 0) view.performSelectorWithObject(selector, static_cast<std::int64_t>(number));
  };
  go("goToLineNumber:", place->line);
  go("goToColumnNumber:", place->column);
  return true;
}

void AppDelegate::adopt(std::unique_ptr<windows::document_window> controller) {
  controllers_.push_back(std::move(controller));
  documentNameDidChange();
}

void AppDelegate::didCloseWindow(platform::window_delegate& controller) {
  auto const it = std::find_if(controllers_.begin(), controllers_.end(),
                               [&](auto const& own) { return own.get() == &controller; });
  if (it == controllers_.end()) return;
  keepPlacement((*it)->window());
  closing_.push_back(std::move(*it));
  controllers_.erase(it);
  documentNameDidChange();
  releaseClosed();
}

void AppDelegate::keepPlacement(platform::window const& window) const {
  auto& defaults = settings::store();
  std::string const placement = window.placement();
  if (!placement.empty() && defaults.boolean("WynWindowPlacementKept"))
    defaults.set("WynWindowPlacement", placement);
}

void AppDelegate::keepPlacements() const {
  if (auto const open = orderedControllers(); !open.empty()) keepPlacement(open.front()->window());
  if (htmlOutputs_ != nullptr) htmlOutputs_->keepPlacements();
}

std::vector<platform::menu_item> AppDelegate::recentItems() const {
  auto items = dynamicItems("recentFiles");
  std::erase_if(items, [](auto const& item) { return item.selector != "openRecentFile:"; });
  return items;
}

void AppDelegate::documentNameDidChange() {
  std::map<std::string, std::size_t> count;
  for (auto const& each : controllers_)
    if (each->textDocument() != nullptr) ++count[each->textDocument()->displayName()];
  for (auto const& each : controllers_)
    if (auto const& document = each->textDocument())
      each->showTitle(count[document->displayName()] > 1);
}

// When nothing waits, since a method of a closed window may still be running further up the stack:
// its own key or menu may have begun the questions of a quit.
void AppDelegate::releaseClosed() {
  postWhileAlive([this] { closing_.clear(); });
}

std::vector<windows::document_window*> AppDelegate::orderedControllers() const {
  std::vector<windows::document_window*> result;
  for (platform::window* window : platform::desktop::current().ordered_windows())
    if (auto* controller = dynamic_cast<windows::document_window*>(window->delegate()))
      result.push_back(controller);
  return result;
}

std::vector<std::shared_ptr<WynDocument>> AppDelegate::orderedDocuments() const {
  std::vector<std::shared_ptr<WynDocument>> result;
  for (windows::document_window* controller : orderedControllers())
    result.push_back(controller->textDocument());
  return result;
}

void AppDelegate::terminate() {
  if (!applicationShouldTerminate()) return;
  if (requests_.refuse) requests_.refuse();
  platform::desktop::current().terminate();
}

bool AppDelegate::applicationShouldTerminate() {
  if (isAskingToQuit_) return false;
  platform::scoped_value const asking(isAskingToQuit_, true);
  // While a question was on screen, others may have been promised that their files are opened.
  bool const agreed = confirmQuitting() && !hasRequests();
  if (agreed) keepPlacements();
  return agreed;
}

bool AppDelegate::applicationMustTerminate() {
  bool all_kept = true;
  for (auto const& controller : controllers_)
    for (auto const& document : controller->documents()) {
      auto const error = document->keepUnsavedText();
      if (!error) continue;
      platform::log("the text of " + document->displayName() + " is lost: " + error->path + ": " +
                    error->message);
      all_kept = false;
    }
  keepPlacements();
  settings::store().save();
  clips_.save();
  return all_kept;
}

// By windows, since each of them asks for all that it holds.
bool AppDelegate::confirmQuitting() {
  if (htmlOutputs_ != nullptr && !htmlOutputs_->askToStopAll()) return false;
  auto const open = orderedControllers();
  std::set<WynDocument*> edited;
  std::size_t edited_windows = 0;
  for (windows::document_window* controller : open) {
    for (auto const& document : controller->documents()) {
      document->lookForFile();
      if (document->isDocumentEdited() && !document->textIsTaken()) edited.insert(document.get());
    }
    if (controller->isDocumentEdited()) ++edited_windows;
  }
  if (edited_windows < 2) return reviewUnsavedDocuments() && saveProjects();
  platform::alert const question{
      windows::unsaved_documents(edited.size()) +
          " Do you want to review these changes before quitting?",
      "If you don't review your documents, all your changes will be lost.",
      {"Review Changes\u2026", "Discard Changes", "Cancel"},
      2};
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return reviewUnsavedDocuments() && saveProjects();
    case 1:
      if (hasRequests()) return false;  // before anything is dropped
      for (windows::document_window* controller : open)
        for (auto const& document : controller->documents()) document->dropUnsavedText();
      return saveProjects();
    default:
      return false;
  }
}

// One window at a time, front to back. What the user doesn't want saved is closed, so that it is
// not asked for again.
bool AppDelegate::reviewUnsavedDocuments() {
  while (true) {
    auto const open = orderedControllers();
    auto const edited =
        std::find_if(open.begin(), open.end(), [](auto const* c) { return c->isDocumentEdited(); });
    if (edited == open.end()) return true;
    if (!(*edited)->windowShouldClose()) return false;
    (*edited)->window().close();
  }
}

bool AppDelegate::saveProjects() {
  auto const open = orderedControllers();
  return std::all_of(open.begin(), open.end(), [](auto* c) { return c->saveBeforeEnd(); });
}

void AppDelegate::selectWindow(int step) {
  auto const open = controllers_.size();
  auto const front = orderedControllers();
  if (open < 2 || front.empty()) return;
  auto const it = std::find_if(controllers_.begin(), controllers_.end(),
                               [&](auto const& c) { return c.get() == front.front(); });
  auto const at = static_cast<std::size_t>(it - controllers_.begin());
  controllers_[(at + open + static_cast<std::size_t>(step)) % open]->showWindow();
}

std::vector<platform::menu_item> AppDelegate::mainMenu() const {
  return menuWithKeys(menus_["main"]);
}

std::vector<platform::menu_item> AppDelegate::actionsWithoutMenu() const {
  return menuWithKeys(menus_["actions"]);
}

std::vector<platform::menu_item> AppDelegate::tabMenu() const {
  return menuWithKeys(menus_["tab"]);
}

std::vector<platform::menu_item> AppDelegate::treeMenu() const {
  return menuWithKeys(menus_["tree"]);
}

std::vector<platform::menu_item> AppDelegate::contextMenu() const {
  return menuWithKeys(menus_["context"]);
}

std::vector<platform::menu_item> AppDelegate::statusMenu(std::string_view part) const {
  return menuWithKeys(menus_["status"][part]);
}

std::vector<platform::menu_item> AppDelegate::dynamicItems(std::string_view name) const {
  if (auto const open = orderedControllers(); name == "tabs")
    return open.empty() ? std::vector<platform::menu_item>() : open.front()->openTabs();
  return app::dynamic_items(name, recent_, frontTextView());
}
