#include "conventions/declared.h"
#include "conventions/modelines.h"
#include "documents/WynDocument.h"
#include "grammar/tokenize_filter.h"
#include "settings/store.h"
#include "styles/indent_patterns.h"
#include "styles/scoped_settings.h"
#include "styles/wrap_columns.h"
#include "text/views/folding_filter.h"
#include "text/views/view.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <utility>

// Options that each document has for itself: what a tab is, and where lines are wrapped. They begin
// with what is stored, a tab with what the text, its project and the language's bundle say of it. A
// change in one view is stored for those opened later, while views that are open follow only what
// another program or the user writes into the defaults.

namespace {

// The note of changes that a view makes for those opened later.
constexpr char const* for_later_views = "option of a document";

constexpr char const* folding_key = "foldsByIndentation";

// How documents of the language are indented where nothing else says it.
conventions::indentation custom_of(plist::value const& settings) {
  conventions::indentation result;
  if (plist::value const& on = settings["softTabs"]) result.soft_tabs = on.boolean_or(false);
  std::int64_t const size = settings["tabSize"].integer_or(0);
  if (size > 0 && size <= settings::max_tab_size) result.indent_size = static_cast<unsigned>(size);
  return result;
}

// The pattern of lines that don't count; null where indentation makes no blocks.
text::view::folding_filter::pattern indent_folding_of(plist::value const& settings) {
  auto found = styles::pattern_of_setting(settings[folding_key].string_or(""), folding_key);
  return found ? std::make_unique<oniguruma::ptrn_t>(std::move(*found)) : nullptr;
}

std::string other_title(int column, bool listed) {
  return column < 1 || listed ? "Other\u2026" : "Other (" + std::to_string(column) + ")\u2026";
}

}  // namespace

void WynTextView::addScopedSettingMethods() {
  addMethod("takeTabSizeFrom:", [this](plist::value const& sender) {
    std::int64_t const size = sender.integer_or(0);
    if (0 < size && size <= settings::max_tab_size) setTabSize(static_cast<unsigned>(size));
    return plist::value();
  });
  addMethod("takeTabSizeFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == static_cast<std::int64_t>(tabSize()));
  });
  addMethod("takeRightMarginFrom:", [this](plist::value const& sender) {
    std::int64_t const column = sender.integer_or(0);
    if (column != 0)
      setRightMargin(static_cast<int>(std::clamp<std::int64_t>(column, -1, settings::max_margin)));
    return plist::value();
  });
  addMethod("takeRightMarginFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == rightMargin());
  });
  addMethod("takeRulerColumnFrom:", [](plist::value const& sender) {
    auto const column = std::clamp<std::int64_t>(sender.integer_or(0), 0, settings::max_margin);
    settings::store().set("WynTextViewRulerColumn", column);
    return plist::value();
  });
  addMethod("takeRulerColumnFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == rulerColumn());
  });
  addMethod("orderFrontRightMarginPanel:",
            [this](plist::value const&) { return plist::value(askForRightMargin()); });
  addMethod("orderFrontRightMarginPanelMenuTitle", [this](plist::value const&) {
    return plist::value(other_title(rightMargin(), wrap_columns::contains(rightMargin())));
  });
  addMethod("orderFrontRightMarginPanelIsChecked:", [this](plist::value const&) {
    return plist::value(rightMargin() > 0 && !wrap_columns::contains(rightMargin()));
  });
}

plist::value WynTextView::scopedValueForKeyInDomain(std::string_view key,
                                                    std::string_view domain) const {
  return scoped_settings::value_for(rootScope(), key, domain);
}

void WynTextView::setScopedValueForKeyInDomain(plist::value value, std::string_view key,
                                               std::string_view domain) {
  scoped_settings::set_value(rootScope(), std::move(value), key, domain, for_later_views);
}

void WynTextView::initializeSettings() {
  styles::document_options const former = documentOptions_;
  documentOptions_ = seenOptions_ = styles::document_options::stored(rootScope());
  if (view_ == nullptr) return;
  plist::value const scoped = stylesForContext({});
  indentSources_.language = styles::indent_sources::stored_for(rootScope());
  indentSources_.bundle = custom_of(scoped);
  indentSources_.style_is_fixed = scoped["softTabsAreFixed"].boolean_or(false);
  indentOrigin_ = styles::apply_sources(indentSources_, documentOptions_);
  view_->folding_filter->set_indent_folding(indent_folding_of(scoped));
  plist::value const& invisibles = scoped["showInvisibles"];
  setScopedShowInvisibles(invisibles ? std::optional(invisibles.integer_or(0) != 0) : std::nullopt);
  applyOptionsToView();
  if (former.softWrap != softWrap() || former.rightMargin != rightMargin()) wrappingDidChange();
  publishIndentation();
}

/// What the text and its project say, as of now.
void WynTextView::readConventions() {
  auto& defaults = settings::store();
  auto const& storage = document_->storage();
  auto const modeline = defaults.boolean("WynFollowModelines") ? conventions::modeline_of(storage)
                                                               : conventions::modeline();
  indentSources_.modeline = modeline.indentation;
  modelineFinalNewline_ = modeline.final_newline;
  indentSources_.detection = defaults.boolean("WynDetectIndentation")
                                 ? conventions::detect_indentation(storage)
                                 : conventions::indentation();
  indentSources_.editorconfig = conventions::declared_for(document_->filename()).indentation;
}

void WynTextView::publishIndentation() {
  updateValueForKey(tabSize(), "tabSize");
  updateValueForKey(softTabs(), "softTabs");
  updateValueForKey(styles::explain(indentOrigin_.size, currentMode_), "tabSizeOrigin");
  updateValueForKey(styles::explain(indentOrigin_.style, currentMode_), "softTabsOrigin");
}

void WynTextView::documentDefaultsDidChange(plist::value const& note) {
  styles::document_options const seen =
      std::exchange(seenOptions_, styles::document_options::stored(rootScope()));
  if (note == plist::value(for_later_views)) return;
  auto const follow = [&](auto option) {
    if (seenOptions_.*option != seen.*option) documentOptions_.*option = seenOptions_.*option;
  };
  using enum styles::indent_source;
  auto const is_stored = [](styles::indent_source source) {
    return source == user_default || source == language;
  };
  if (is_stored(indentOrigin_.size)) follow(&styles::document_options::tabSize);
  if (is_stored(indentOrigin_.style)) follow(&styles::document_options::softTabs);
  follow(&styles::document_options::softWrap);
  follow(&styles::document_options::rightMargin);
}

void WynTextView::setTabSize(unsigned columns) {
  if (columns == 0) return;
  indentSources_.hand.indent_size = indentSources_.hand.tab_width = columns;
  indentOrigin_.size = styles::indent_source::hand;
  if (columns == tabSize()) return publishIndentation();
  documentOptions_.tabSize = columns;
  if (view_ != nullptr) {
    textview::view_will_change const scope(*this, true);
    view_->set_tab_size(columns);
  }
  setScopedValueForKeyInDomain(columns, "tabSize", styles::tab_size_domain);
  publishIndentation();
  setNeedsDisplay();
}

void WynTextView::setSoftTabs(bool on) {
  if (on == softTabs()) return;
  indentSources_.hand.soft_tabs = on;
  indentOrigin_.style = styles::indent_source::hand;
  documentOptions_.softTabs = on;
  if (view_ != nullptr) view_->set_treats_spaces_as_tabs(on);
  setScopedValueForKeyInDomain(on, "softTabs", styles::soft_tabs_domain);
  publishIndentation();
}

void WynTextView::setSoftWrap(bool on) {
  if (on == softWrap()) return;
  documentOptions_.softWrap = on;
  wrappingDidChange();
  setScopedValueForKeyInDomain(on, "softWrap", styles::soft_wrap_domain);
}

void WynTextView::setRightMargin(int column) {
  if (column == rightMargin()) return;
  documentOptions_.rightMargin = column;
  wrappingDidChange();
  settings::store().set(styles::right_margin_key, column, for_later_views);
}

void WynTextView::wrappingDidChange() {
  applySoftWrap();
  setupTextFrame();
  setNeedsDisplay();
  if (view_ != nullptr) centerSelectionInVisibleArea();
}

// A column that is chosen joins those in the menu. False for what is none.
bool WynTextView::askForRightMargin() {
  auto const column = wrap_columns::ask(rightMargin() > 0 ? rightMargin() : 80);
  if (!column) return true;
  if (*column == 0) return false;
  setRightMargin(*column);
  if (!wrap_columns::contains(*column)) wrap_columns::add(*column);
  return true;
}
