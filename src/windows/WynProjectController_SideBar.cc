#include "documents/WynDocument.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "settings/store.h"
#include "windows/WynProjectController.h"

#include <algorithm>
#include <utility>

namespace {

constexpr char const* width_key = "WynProjectDrawerWidth";
constexpr char const* side_key = "WynProjectDrawerSide";

// Those that the text has a meaning of its own for.
bool is_for_tree_alone(std::string const& selector) {
  for (char const* const name :
       {"cut:", "copy:", "paste:", "selectAll:", "canCut", "canCopy", "canPaste", "projectRemove:"})
    if (selector == name) return true;
  return false;
}

}  // namespace

void WynProjectController::showSideBar(bool visible, std::optional<std::int64_t> width) {
  side_.set_on_right(settings::store().string(side_key) == "right");
  side_.set_font_size(double(settings::store().integer("WynProjectDrawerFontSize")));
  side_.set_width(int(
      std::clamp<std::int64_t>(width.value_or(settings::store().integer(width_key)), 80, 4000)));
  side_.set_visible(visible);
}

// The next window's is as wide.
void WynProjectController::keepSideBar() {
  if (settings::store().integer(width_key) != side_.width())
    settings::store().set(width_key, side_.width());
}

void WynProjectController::addSideBarMethods() {
  auto const add = [this](char const* selector, std::function<bool()> action) {
    addMethod(selector,
              [action = std::move(action)](plist::value const&) { return plist::value(action()); });
  };
  add("toggleSideBar:", [this] { return side_.set_visible(!side_.is_visible()), true; });
  add("toggleSideBarIsChecked:", [this] { return side_.is_visible(); });
  add("toggleSideBarOnRight:", [this] {
    side_.set_on_right(!side_.is_on_right());
    settings::store().set(side_key, side_.is_on_right() ? "right" : "left");
    return true;
  });
  add("toggleSideBarOnRightIsChecked:", [this] { return side_.is_on_right(); });
  add("focusSideBar:", [this] {
    bool const leaves = side_.has_focus();
    side_.set_visible(true);
    side_.set_focus(!leaves);
    return true;
  });
  add("revealInProject:", [this] {
    if (!treeView_.reveal(tabs_[selected_].path)) return false;
    side_.set_visible(true);
    return true;
  });
  add("canRevealInProject", [this] { return !tabs_[selected_].path.empty(); });
  for (std::string const& selector : treeView_.selectors()) {
    if (is_for_tree_alone(selector)) continue;
    addMethod(selector, [this, selector](plist::value const& argument) {
      bool const is_query = selector.back() != ':';
      if (!is_query) side_.set_visible(true);
      return treeView_.performSelectorWithObject(selector, argument);
    });
  }
}

windows::tree_owner::file_state WynProjectController::stateOfFile(std::string const& path) const {
  for (std::size_t n = 0; n < tabs_.size(); ++n)
    if (tabs_[n].path == path)
      return {true, tabs_[n].document && tabs_[n].document->isDocumentEdited(), n == selected_};
  return {};
}

// A file that is only looked at takes the place of the one looked at before.
bool WynProjectController::showTreeFile(std::string const& path, bool keeps) {
  bool const had_tab = hasTabOf(path);
  if (!selectItem(path)) return false;
  platform::tab_id const shown = tabs_[selected_].id;
  if (keeps && shown == preview_) preview_ = 0;
  if (keeps || had_tab) return true;
  auto const former = indexOfTab(std::exchange(preview_, shown));
  if (former && *former != selected_) removeTab(*former, false);
  return true;
}

// Open documents go along, and so does what is kept of those that aren't open.
void WynProjectController::fileWasMoved(std::string const& from, std::string const& to) {
  auto const moved = [&](std::string const& path) -> std::string {
    if (path != from && !path.starts_with(from + "/")) return "";
    return to + path.substr(from.size());
  };
  for (tab& open : tabs_) {
    std::string const path = moved(open.path);
    if (path.empty()) continue;
    open.path = path;
    // Tells of its new name, which may change the tabs.
    if (auto const document = open.document) document->setFilename(path);
  }
  plist::dictionary kept;
  for (auto& [path, metadata] : contents_.meta_data) {
    std::string const other = moved(path);
    kept[other.empty() ? path : other] = std::move(metadata);
  }
  contents_.meta_data = std::move(kept);
  tabsDidChange();
  documentDidChange();
}
