#include "bundles/BundleManager.h"
#include "documents/WynDocument.h"
#include "documents/printable_name.h"
#include "path/entries.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "plist/key_order.h"
#include "windows/WynProjectController.h"
#include "windows/large_files.h"
#include "windows/tab_titles.h"

#include <algorithm>
#include <ctime>
#include <utility>

namespace {

constexpr std::size_t most_closed = 50;  // tabs that can come back

std::string without_extension(std::string const& name) {
  std::size_t const dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? name : name.substr(0, dot);
}

}  // namespace

platform::shown_tab WynProjectController::shownTab(tab const& of) const {
  bool const is_gone = of.document && of.document->fileIsGone();
  return {of.id, of.title + (is_gone ? " (deleted)" : ""),
          documents::printable(path::abbreviate_with_tilde(of.path)),
          of.document && of.document->isDocumentEdited()};
}

// Others have come, gone, or changed places or names.
void WynProjectController::tabsDidChange() {
  std::vector<windows::named_tab> names;
  for (tab const& open : tabs_)
    names.push_back(
        {open.document ? open.document->displayName() : documents::printable_name(open.path),
         open.path});
  std::vector<std::string> const titles = windows::tab_titles(names);
  std::vector<platform::shown_tab> shown;
  for (std::size_t n = 0; n < tabs_.size(); ++n) {
    tabs_[n].title = titles[n];
    shown.push_back(shownTab(tabs_[n]));
  }
  bar_.set_tabs(std::move(shown), tabs_[selected_].id);
  treeView_.marksDidChange();
}

void WynProjectController::showStateOf(WynDocument const& document) {
  for (tab const& open : tabs_)
    if (open.document.get() == &document) {
      bar_.update_tab(shownTab(open));
      if (document.isDocumentEdited() && open.id == preview_) preview_ = 0;
    }
  treeView_.marksDidChange();
}

std::optional<std::size_t> WynProjectController::indexOfTab(platform::tab_id id) const {
  auto const found =
      std::find_if(tabs_.begin(), tabs_.end(), [&](tab const& open) { return open.id == id; });
  if (found == tabs_.end()) return std::nullopt;
  return static_cast<std::size_t>(found - tabs_.begin());
}

WynProjectController::tab WynProjectController::newTab(std::string path,
                                                       std::shared_ptr<WynDocument> document) {
  static platform::tab_id last_id = 0;
  tab made;
  made.id = ++last_id;
  made.path = std::move(path);
  if (document == nullptr && made.path.empty()) document = WynDocument::document();
  if (document != nullptr) adopt(made, std::move(document));
  return made;
}

void WynProjectController::adopt(tab& into, std::shared_ptr<WynDocument> document) {
  auto& center = platform::notification_center::standard();
  into.document = std::move(document);
  into.document->openDocument();
  into.edited = center.observe(
      WynDocument::documentEditedDidChange,
      [this, edited = into.document.get()](auto const&) {
        showStateOf(*edited);
        documentDidChange();
      },
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
  tabsDidChange();
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
  if (is_new && document) {
    tabs_.push_back(std::move(made));
    tabsDidChange();
  }
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
  bool const may_open =
      tabWithPath(path) != nullptr || (canOpenFile(path) && windows::confirm_large_file(path));
  return may_open && showFile(path);
}

bool WynProjectController::openFile(std::string const& path) {
  if (tabWithPath(path) == nullptr) projects::learn_to_open(path, textFileRules());
  return showFile(path);
}

bool WynProjectController::showFile(std::string const& path) {
  tab const& only = tabs_.front();
  bool const takes_place = tabs_.size() == 1 && only.path.empty() &&
                           only.document->storage().empty() && !only.document->isDocumentEdited() &&
                           !textView().isPlayingMacro();
  if (documentForItem(path) == nullptr) return false;
  // A link is in the tab of the file that it leads to.
  tab const* const open = tabWithPath(path);
  if (open == nullptr) return false;
  selectTab(static_cast<std::size_t>(open - tabs_.data()));
  if (takes_place && tabs_.size() > 1) removeTab(0);
  return true;
}

bool WynProjectController::holdsFile(std::string const& path) const {
  if (tree_.holds_file(path)) return true;
  bool is_inside = false;
  projects::visit_items(tree_.roots(), [&](projects::project_item& item) {
    is_inside |= item.kind() == projects::item_kind::folder && item.own() != nullptr &&
                 path.starts_with(item.path() == "/" ? "/" : item.path() + "/");
    return item.kind() == projects::item_kind::group;
  });
  return is_inside;
}

bool WynProjectController::hasTabOf(std::string const& path) const {
  return std::any_of(tabs_.begin(), tabs_.end(),
                     [&](tab const& open) { return !path.empty() && open.path == path; });
}

void WynProjectController::selectTab(std::size_t index) {
  showTab(index);
  noteUse();
}

void WynProjectController::noteUse() {
  used_at_.reset();
  std::erase(used_, tabs_[selected_].id);
  used_.push_back(tabs_[selected_].id);
}

bool WynProjectController::goToNextUsedFile(int step) {
  std::erase_if(used_, [this](platform::tab_id id) { return !indexOfTab(id); });
  // Those that have never been shown come last.
  for (tab const& open : tabs_)
    if (std::find(used_.begin(), used_.end(), open.id) == used_.end())
      used_.insert(used_.begin(), open.id);
  std::size_t const count = used_.size();
  if (count < 2) return false;
  std::size_t const at = used_at_.value_or(count - 1);
  std::size_t const next = (at + count - static_cast<std::size_t>(step)) % count;
  showTab(*indexOfTab(used_[next]));
  used_at_ = next;
  return true;
}

bool WynProjectController::moveTab(int step) {
  std::size_t const count = tabs_.size();
  if (count < 2) return false;
  moveTab(selected_, (selected_ + count + static_cast<std::size_t>(step)) % count);
  return true;
}

void WynProjectController::showTab(std::size_t index) {
  if (index >= tabs_.size()) return;
  auto const document = documentOfTab(tabs_[index]);
  if (document == nullptr) return;
  selected_ = index;
  bar_.select_tab(tabs_[index].id);
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
  tabsDidChange();
}

void WynProjectController::keepMetaData(tab const& of) {
  if (of.path.empty() || !of.document) return;
  if (of.document == textDocument()) textView().snapshotMetaData();
  if (plist::value const metadata = of.document->metaData(); metadata.as_dictionary())
    contents_.meta_data[of.path] = metadata;
}

// Without a question.
void WynProjectController::removeTab(std::size_t index, bool can_come_back) {
  tab const removed = std::move(tabs_[index]);
  keepMetaData(removed);
  tabs_.erase(tabs_.begin() + static_cast<std::ptrdiff_t>(index));
  if (!removed.path.empty() && can_come_back) {
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
  tabsDidChange();
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

bool WynProjectController::performCloseOtherTabs(platform::tab_id id) {
  auto const kept = id == 0 ? selected_ : indexOfTab(id);
  if (!kept) return false;
  platform::tab_id const stays = tabs_[*kept].id;
  if (!askToSaveModifiedDocuments(tabs_[*kept].document.get())) return false;
  if (auto const index = indexOfTab(stays)) selectTab(*index);
  for (std::size_t n = tabs_.size(); n-- > 0;)
    if (tabs_[n].id != stays) removeTab(n);
  return true;
}

bool WynProjectController::copyPathOfTab(platform::tab_id id) {
  auto const index = id == 0 ? selected_ : indexOfTab(id);
  if (!index || tabs_[*index].path.empty()) return false;
  platform::desktop::current().general_pasteboard().set(
      {{std::string(platform::pasteboard_type::text), tabs_[*index].path}});
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

// What the user does in the tab bar.

void WynProjectController::tabWasSelected(platform::tab_id id) {
  if (auto const index = indexOfTab(id)) selectTab(*index);
}

void WynProjectController::tabShouldClose(platform::tab_id id) {
  if (auto const index = indexOfTab(id)) performCloseTab(*index);
}

void WynProjectController::closeTab(platform::tab_id id) {
  if (auto const index = id == 0 ? selected_ : indexOfTab(id)) performCloseTab(*index);
}

std::vector<platform::menu_item> WynProjectController::openTabs() const {
  std::vector<platform::menu_item> items;
  for (std::size_t n = 0; n < tabs_.size(); ++n) {
    platform::menu_item item;
    item.title = shownTab(tabs_[n]).title;
    item.selector = "selectTab:";
    item.argument = static_cast<std::int64_t>(tabs_[n].id);
    items.push_back(std::move(item));
  }
  return items;
}

std::vector<platform::menu_item> WynProjectController::menuForTab(platform::tab_id id) {
  auto items = owner().tabMenu();
  for (platform::menu_item& item : items) item.argument = static_cast<std::int64_t>(id);
  return items;
}

void WynProjectController::tabWasMoved(platform::tab_id id, std::size_t to) {
  if (auto const index = indexOfTab(id)) moveTab(*index, std::min(to, tabs_.size() - 1));
}

void WynProjectController::tabWasDroppedHere(platform::tab_id id, std::size_t to) {
  for (platform::window* const each : platform::desktop::current().ordered_windows()) {
    auto* const other = dynamic_cast<WynProjectController*>(each->delegate());
    if (other == nullptr || other == this) continue;
    auto const index = other->indexOfTab(id);
    if (!index) continue;
    auto const document = other->documentOfTab(other->tabs_[*index]);
    if (document == nullptr) return;
    takeDocument(document, to);
    other->removeTab(*index, false);
    showWindow();
    return;
  }
}

void WynProjectController::takeDocument(std::shared_ptr<WynDocument> const& document,
                                        std::size_t to) {
  auto at = static_cast<std::size_t>(
      std::find_if(tabs_.begin(), tabs_.end(),
                   [&](tab const& open) { return open.document == document; }) -
      tabs_.begin());
  bool const is_new = at == tabs_.size();
  if (is_new) {
    tab made = newTab(document->filename(), document);
    at = std::min(to, tabs_.size());
    tabs_.insert(tabs_.begin() + static_cast<std::ptrdiff_t>(at), std::move(made));
    if (at <= selected_) ++selected_;
  }
  tabsDidChange();
  selectTab(at);
}

void WynProjectController::tabWasDraggedOut(platform::tab_id id) {
  auto const index = indexOfTab(id);
  if (!index) return;
  auto const document = documentOfTab(tabs_[*index]);
  bool const is_all = tabs_.size() == 1 && document != nullptr && document->filename().empty() &&
                      document->storage().empty();
  if (document == nullptr || is_all) return;
  owner().showInNewWindow(document);
  // Showing it may have asked about its file.
  if (auto const at = indexOfTab(id)) removeTab(*at, false);
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
