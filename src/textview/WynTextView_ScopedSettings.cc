#include "platform/desktop.h"
#include "platform/user_defaults.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/scoped_settings.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <charconv>
#include <utility>

// Options that each document has for itself: what a tab is, and where lines are wrapped. They begin
// with what is stored; a change in one view is stored for those opened later, while views that are
// open follow only what another program or the user writes into the defaults.

namespace {

constexpr char const* soft_tabs_domain = "WynTextViewScopedSoftTabs";
constexpr char const* tab_size_domain = "WynTextViewScopedTabSize";
constexpr char const* soft_wrap_domain = "WynTextViewScopedSoftWrap";
constexpr std::int64_t max_tab_size = 64;
constexpr std::int64_t max_margin = 10000;

// Counts the stores that this process is just making.
int stores = 0;

class storing {
 public:
  storing() { ++stores; }
  ~storing() { --stores; }
  storing(storing const&) = delete;
  storing& operator=(storing const&) = delete;
};

platform::user_defaults& defaults() {
  return platform::user_defaults::standard();
}

// Nothing unless all of the text is a number of columns.
std::optional<int> columns_of(std::string_view text) {
  int columns = 0;
  char const* const end = text.data() + text.size();
  auto const [behind, error] = std::from_chars(text.data(), end, columns);
  if (error != std::errc() || behind != end || columns < 1 || columns > max_margin)
    return std::nullopt;
  return columns;
}

std::string other_title(int column, bool listed) {
  return column < 1 || listed ? "Other\u2026" : "Other (" + std::to_string(column) + ")\u2026";
}

}  // namespace

void WynTextView::addScopedSettingMethods() {
  addMethod("takeTabSizeFrom:", [this](plist::value const& sender) {
    std::int64_t const size = sender.integer_or(0);
    if (0 < size && size <= max_tab_size) setTabSize(static_cast<unsigned>(size));
    return plist::value();
  });
  addMethod("takeTabSizeFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == static_cast<std::int64_t>(tabSize()));
  });
  addMethod("takeRightMarginFrom:", [this](plist::value const& sender) {
    std::int64_t const column = sender.integer_or(0);
    if (column != 0)
      setRightMargin(static_cast<int>(std::clamp<std::int64_t>(column, -1, max_margin)));
    return plist::value();
  });
  addMethod("takeRightMarginFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == rightMargin());
  });
  addMethod("orderFrontRightMarginPanel:",
            [this](plist::value const&) { return askForRightMargin(); });
  addMethod("orderFrontRightMarginPanelMenuTitle", [this](plist::value const&) {
    return plist::value(other_title(rightMargin(), isOwnWrapColumn()));
  });
  addMethod("orderFrontRightMarginPanelIsChecked:", [this](plist::value const&) {
    return plist::value(rightMargin() > 0 && !isOwnWrapColumn());
  });
}

plist::value WynTextView::scopedValueForKeyInDomain(std::string_view key,
                                                    std::string_view domain) const {
  return scoped_settings::value_for(rootScope(), key, domain);
}

void WynTextView::setScopedValueForKeyInDomain(plist::value value, std::string_view key,
                                               std::string_view domain) {
  storing const own;
  scoped_settings::set_value(rootScope(), std::move(value), key, domain);
}

WynTextView::document_options WynTextView::storedOptions() const {
  auto& d = defaults();
  plist::value const size = scopedValueForKeyInDomain("tabSize", tab_size_domain);
  plist::value const soft_tabs = scopedValueForKeyInDomain("softTabs", soft_tabs_domain);
  plist::value const soft_wrap = scopedValueForKeyInDomain("softWrap", soft_wrap_domain);
  std::int64_t const columns = size.integer_or(d.integer("WynTextViewTabSize", 4));
  std::int64_t const margin = d.integer("WynTextViewRightMarginColumn", -1);
  return {static_cast<unsigned>(std::clamp<std::int64_t>(columns, 1, max_tab_size)),
          soft_tabs.boolean_or(false), soft_wrap.boolean_or(d.boolean("WynTextViewSoftWrap")),
          static_cast<int>(margin < 1 ? -1 : std::min(margin, max_margin))};
}

void WynTextView::initializeSettings() {
  document_options const former = documentOptions_;
  documentOptions_ = seenOptions_ = storedOptions();
  if (view_ == nullptr) return;
  plist::value const styles = stylesForContext({});
  scopedShowInvisibles_.reset();
  if (styles["showInvisibles"]) scopedShowInvisibles_ = styles["showInvisibles"].integer_or(0) != 0;
  showInvisibles_ =
      scopedShowInvisibles_.value_or(defaults().boolean("WynTextViewShowInvisiblesEnabled"));
  applyOptionsToView();
  if (former.softWrap != softWrap() || former.rightMargin != rightMargin()) wrappingDidChange();
  if (former.tabSize != tabSize()) updateValueForKey(tabSize(), "tabSize");
  if (former.softTabs != softTabs()) updateValueForKey(softTabs(), "softTabs");
}

void WynTextView::documentDefaultsDidChange() {
  document_options const seen = std::exchange(seenOptions_, storedOptions());
  if (stores > 0) return;
  auto const follow = [&](auto option) {
    if (seenOptions_.*option != seen.*option) documentOptions_.*option = seenOptions_.*option;
  };
  follow(&document_options::tabSize);
  follow(&document_options::softTabs);
  follow(&document_options::softWrap);
  follow(&document_options::rightMargin);
}

void WynTextView::setTabSize(unsigned columns) {
  if (columns == tabSize() || columns == 0) return;
  documentOptions_.tabSize = columns;
  if (view_ != nullptr) {
    view_will_change const scope(*this, true);
    view_->set_tab_size(columns);
  }
  setScopedValueForKeyInDomain(columns, "tabSize", tab_size_domain);
  updateValueForKey(columns, "tabSize");
  setNeedsDisplay();
}

void WynTextView::setSoftTabs(bool on) {
  if (on == softTabs()) return;
  documentOptions_.softTabs = on;
  if (view_ != nullptr) view_->set_treats_spaces_as_tabs(on);
  setScopedValueForKeyInDomain(on, "softTabs", soft_tabs_domain);
  updateValueForKey(on, "softTabs");
}

void WynTextView::setSoftWrap(bool on) {
  if (on == softWrap()) return;
  documentOptions_.softWrap = on;
  wrappingDidChange();
  setScopedValueForKeyInDomain(on, "softWrap", soft_wrap_domain);
}

void WynTextView::setRightMargin(int column) {
  if (column == rightMargin()) return;
  documentOptions_.rightMargin = column;
  wrappingDidChange();
  storing const own;
  defaults().set("WynTextViewRightMarginColumn", column);
}

void WynTextView::wrappingDidChange() {
  applySoftWrap();
  setupTextFrame();
  setNeedsDisplay();
  if (view_ != nullptr) centerSelectionInVisibleArea();
}

bool WynTextView::isOwnWrapColumn() const {
  plist::array const columns = defaults().array("WynWrapColumns");
  return std::any_of(columns.begin(), columns.end(), [this](plist::value const& column) {
    return column.integer_or(0) == rightMargin();
  });
}

std::vector<platform::menu_item> WynTextView::wrapColumnItems() {
  std::vector<platform::menu_item> items;
  for (plist::value const& column : defaults().array("WynWrapColumns")) {
    if (column.integer_or(0) < 1) continue;
    platform::menu_item item;
    item.title = std::to_string(column.integer_or(0));
    item.selector = "takeRightMarginFrom:";
    item.argument = column;
    items.push_back(std::move(item));
  }
  return items;
}

// A column that is chosen joins those in the menu.
plist::value WynTextView::askForRightMargin() {
  std::string const initial = rightMargin() > 0 ? std::to_string(rightMargin()) : "80";
  auto const answer = platform::desktop::current().prompts().run(
      "Wrap Column", "Column at which lines are wrapped", initial);
  if (!answer) return {};
  auto const column = columns_of(*answer);
  if (!column) return false;
  setRightMargin(*column);
  if (isOwnWrapColumn()) return {};
  plist::array columns = defaults().array("WynWrapColumns");
  auto const behind = std::find_if(columns.begin(), columns.end(), [&](plist::value const& other) {
    return other.integer_or(0) > *column;
  });
  columns.insert(behind, *column);
  defaults().set("WynWrapColumns", std::move(columns));
  return {};
}
