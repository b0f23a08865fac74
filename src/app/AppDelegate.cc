#include "app/AppDelegate.h"

#include "actions/WynPasteboardManager.h"
#include "app/dynamic_items.h"
#include "app/file_argument.h"
#include "app/line_place.h"
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
#include "windows/WynDocumentController.h"
#include "windows/select_item.h"
#include "windows/template_files.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace {

constexpr double defaults_period = 1;          // seconds between looks at the defaults file
constexpr double clipboard_delay = 0.05;       // seconds
constexpr std::int64_t large_file = 0xA00000;  // bytes; one more and the user is asked

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
  // Views perform it themselves; without a window there are templates still.
  addMethod("executeBundleItem:", [this](plist::value const& uuid) {
    return plist::value(
        BundleManager::sharedInstance().executeItemWithUUID(uuid.string_or(""), *this));
  });
  add("openDocument:", [this](auto const&) { openDocument(); });
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
  add("selectFromList:", [this](plist::value const& name) {
    WynTextView* const view = frontTextView();
    if (view == nullptr) return platform::desktop::current().beep();
    std::string const list = name.string_or("");
    app::select_from_list(list, list == "languages" ? dynamicItems(list) : listItems(list), *view);
  });
  addMethod("goToLineAction:", [this](plist::value const& place) {
    return plist::value(goToLine(place.string_or("")));
  });
  add("offerSafetyCopies:", [this](auto const&) { app::offer_safety_copies(*this); });
  add("orderFrontFindPanel:", [](plist::value const& field) {
    WynFindManager::sharedInstance().orderFrontFindPanel(field.integer_or(0) == 1);
  });
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
  add("terminate:", [this](auto const&) {
    if (applicationShouldTerminate()) platform::desktop::current().terminate();
  });
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
      auto const* const place = (results::shared().*go)();
      if (place != nullptr) openPlace(*place);
      return plist::value(place != nullptr);
    });
  };
  add("selectNextResult:", &results::next);
  add("selectPreviousResult:", &results::previous);
  auto const has_results = [](auto const&) { return plist::value(!results::shared().is_empty()); };
  addMethod("canSelectNextResult", has_results);
  addMethod("canSelectPreviousResult", has_results);
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
  for (std::size_t n = 0; n < controllers_.size(); ++n)
    if (controllers_[n]->textDocument() != nullptr) controllers_[n]->saveQuietly();
}

AppDelegate::~AppDelegate() {
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
  bundleWatcher_ = std::make_unique<bundles::bundle_watcher>(BundleManager::sharedInstance());
  themeWatcher_ = std::make_unique<styles::theme_watcher>(WynThemeManager::sharedInstance());
  bool const wanted = defaults.string("WynAppDelegateOpenUntitledDocument") != "never";
  if (controllers_.empty() && wanted) newDocument();
  postWhileAlive([this] {
    if (!menuFault_.empty())
      platform::desktop::current().alerts().run({"Menus Missing", menuFault_, {"Continue"}});
    app::offer_safety_copies(*this);
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

void AppDelegate::openLaunchArguments() {
  for (std::string const& argument : launchArguments_) {
    app::file_argument const file = app::parse_file_argument(argument, currentDirectory_);
    // With a line, the file is wanted as text.
    if (!file.place && installIfBundle(file.path)) continue;
    openFile(file.path, file.place);
  }
  launchArguments_.clear();
}

// By its name alone, so that opening any other file doesn't load the bundles.
bool AppDelegate::installIfBundle(std::string const& path) {
  return bundles::is_bundle_file(path) && BundleManager::sharedInstance().canHandleFile(path);
}

void AppDelegate::openFiles(std::vector<std::string> const& paths) {
  for (std::string const& path : paths)
    if (!installIfBundle(path)) openFile(path);
}

WynDocumentController* AppDelegate::openFile(std::string const& path,
                                             std::optional<text::line_place> const& place) {
  auto const go = [&](WynDocumentController& controller) {
    if (place) controller.textView().goToLineAndColumn(*place);
    controller.showWindow();
    return &controller;
  };
  std::string const standard = path::resolve(path);
  for (WynDocumentController* open : orderedControllers())
    if (open->textDocument()->filename() == standard) return go(*open);
  if (!confirmLargeFile(standard)) return nullptr;

  std::shared_ptr<WynDocument> const document = WynDocument::documentWithContentsOfFile(standard);
  if (document == nullptr) return nullptr;
  recent_.add(standard);
  WynDocumentController* const controller = go(show(document));
  postWhileAlive([this, standard] { app::offer_safety_copies_beside(*this, standard); });
  return controller;
}

void AppDelegate::openRecentFile(std::string const& path) {
  if (path::exists(path)) {
    openFile(path);
    return;
  }
  platform::alert const question{
      "Couldn't Open",
      "The file " + documents::quoted(documents::printable(path::abbreviate_with_tilde(path))) +
          " was deleted or moved, or can't be reached now.",
      {"Continue", "Remove from Menu"}};
  if (platform::desktop::current().alerts().run(question) == 1) recent_.remove(path);
}

WynDocumentController& AppDelegate::show(std::shared_ptr<WynDocument> document) {
  // Of several empty windows the hindmost is taken.
  auto const open = orderedControllers();
  auto const reused = std::find_if(open.rbegin(), open.rend(),
                                   [](auto const* c) { return c->canBeUsedForNewDocument(); });
  if (reused != open.rend()) {
    (*reused)->setTextDocument(std::move(document));
    return **reused;
  }
  return newWindow(std::move(document));
}

bool AppDelegate::confirmLargeFile(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode) || info.st_size <= large_file)
    return true;
  if (static_cast<std::uint64_t>(info.st_size) > documents::largest_file) return true;  // refused
  char size[32];
  std::snprintf(size, sizeof size, "%.1f", static_cast<double>(info.st_size) / 1048576);
  platform::alert const question{"Opening Large File",
                                 "The file \u201c" + path::abbreviate_with_tilde(path) +
                                     "\u201d has a size of " + size +
                                     " MB. Are you sure you want to load this as a text file?",
                                 {"Open File", "Cancel"},
                                 1};
  return platform::desktop::current().alerts().run(question) == 0;
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

bool AppDelegate::newDocumentFromTemplate(std::string const& uuid) {
  auto const item = BundleManager::sharedInstance().bundleItemForUUID(uuid);
  if (item == nullptr || item->kind() != bundles::item_kind::file_template) return false;
  windows::temporary_document place(item->content()["extension"].string_or(""));
  if (place.path().empty()) return false;
  WynTextView* const view = frontTextView();
  auto const files = windows::files_for_template(
      *item, place.path(),
      commands::environment_for(view != nullptr ? static_cast<platform::responder*>(view) : this));
  if (files.paths.empty()) {
    platform::desktop::current().alerts().run(
        {"The Template Created No File", item->name() + ": " + files.error, {"Continue"}});
    return true;
  }
  for (std::size_t n = files.missing; n > 0; --n) platform::desktop::current().beep();
  if (files.paths.size() > 1) {
    place.keep();
    for (std::string const& path : files.paths) openFile(path);
    return true;
  }
  return showAsNewDocument(files.paths.front());
}

// Its name and first line determine the language, but the document has no file.
bool AppDelegate::showAsNewDocument(std::string const& path) {
  documents::file_text read;
  if (documents::read_file_text(path, encoding::UTF8, true, read)) return false;
  text::unit_view const units = read.units.view();
  std::string const first_line =
      unicode::to_utf8(units.substr(0, std::min(units.find(u'\n'), units.size())));
  WynDocumentController& controller = showText(read.units);
  WynTextView& view = controller.textView();
  view.changeLanguageToAndLearn(view.languageChoiceForFileWithFirstLine(path, first_line), false);
  controller.showWindow();
  return true;
}

WynDocumentController& AppDelegate::showText(text::text_block const& text) {
  auto storage = std::make_unique<text::storage>();
  storage->insert(storage->end(-1), text);
  storage->forget_history();
  return show(std::make_shared<WynDocument>(std::move(storage)));
}

void AppDelegate::openAsNewDocument(text::text_block const& text) {
  showText(text).showWindow();
}

void AppDelegate::newDocument() {
  newWindow(WynDocument::document()).showWindow();
}

WynDocumentController& AppDelegate::newWindow(std::shared_ptr<WynDocument> document) {
  auto controller = std::make_unique<WynDocumentController>(*this);
  controller->setTextDocument(std::move(document));
  WynDocumentController& result = *controller;
  adopt(std::move(controller));
  return result;
}

void AppDelegate::openDocument() {
  platform::open_request request;
  request.title = "Quirnote: Open";
  request.directory = currentDirectory_;
  request.allows_folders = false;
  openFiles(platform::desktop::current().panels().run_open(request));
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
  if (row && !select.accept(*row)) platform::desktop::current().beep();
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

void AppDelegate::adopt(std::unique_ptr<WynDocumentController> controller) {
  controllers_.push_back(std::move(controller));
  documentNameDidChange();
}

void AppDelegate::didCloseWindow(platform::window_delegate& controller) {
  auto const it = std::find_if(controllers_.begin(), controllers_.end(),
                               [&](auto const& own) { return own.get() == &controller; });
  if (it == controllers_.end()) return;
  closing_.push_back(std::move(*it));
  controllers_.erase(it);
  documentNameDidChange();
  releaseClosed();
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

std::vector<WynDocumentController*> AppDelegate::orderedControllers() const {
  std::vector<WynDocumentController*> result;
  for (platform::window* window : platform::desktop::current().ordered_windows())
    if (auto* controller = dynamic_cast<WynDocumentController*>(window->delegate()))
      result.push_back(controller);
  return result;
}

std::vector<std::shared_ptr<WynDocument>> AppDelegate::orderedDocuments() const {
  std::vector<std::shared_ptr<WynDocument>> result;
  for (WynDocumentController* controller : orderedControllers())
    result.push_back(controller->textDocument());
  return result;
}

bool AppDelegate::applicationShouldTerminate() {
  if (isAskingToQuit_) return false;
  platform::scoped_value const asking(isAskingToQuit_, true);
  bool const agreed = confirmQuitting();
  if (agreed && htmlOutputs_ != nullptr) htmlOutputs_->keepPlacements();
  return agreed;
}

bool AppDelegate::applicationMustTerminate() {
  bool all_kept = true;
  for (auto const& controller : controllers_) {
    auto const document = controller->textDocument();
    if (document == nullptr) continue;
    auto const error = document->keepUnsavedText();
    if (!error) continue;
    platform::log("the text of " + document->displayName() + " is lost: " + error->path + ": " +
                  error->message);
    all_kept = false;
  }
  if (htmlOutputs_ != nullptr) htmlOutputs_->keepPlacements();
  settings::store().save();
  clips_.save();
  return all_kept;
}

bool AppDelegate::confirmQuitting() {
  if (htmlOutputs_ != nullptr && !htmlOutputs_->askToStopAll()) return false;
  auto const open = orderedControllers();
  for (WynDocumentController* controller : open)
    if (controller->textDocument() != nullptr) controller->textDocument()->lookForFile();
  auto const edited =
      std::count_if(open.begin(), open.end(), [](auto const* c) { return c->isDocumentEdited(); });
  if (edited == 0) return true;
  if (edited == 1) return reviewUnsavedDocuments();
  platform::alert const question{
      "You have " + std::to_string(edited) +
          " documents with unsaved changes. Do you want to review these changes before quitting?",
      "If you don't review your documents, all your changes will be lost.",
      {"Review Changes\u2026", "Discard Changes", "Cancel"},
      2};
  switch (platform::desktop::current().alerts().run(question)) {
    case 0:
      return reviewUnsavedDocuments();
    case 1:
      for (WynDocumentController* controller : open) controller->textDocument()->dropUnsavedText();
      return true;
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
    if (!(*edited)->askToSave()) return false;
    (*edited)->window().close();
  }
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

std::vector<platform::menu_item> AppDelegate::contextMenu() const {
  return menuWithKeys(menus_["context"]);
}

std::vector<platform::menu_item> AppDelegate::statusMenu(std::string_view part) const {
  return menuWithKeys(menus_["status"][part]);
}

std::vector<platform::menu_item> AppDelegate::dynamicItems(std::string_view name) const {
  return app::dynamic_items(name, recent_, frontTextView());
}
