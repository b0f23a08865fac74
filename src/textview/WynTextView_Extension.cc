#include "platform/desktop.h"
#include "settings/limits.h"
#include "settings/store.h"
#include "styles/view_styles.h"
#include "text/cell_width.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <array>
#include <cmath>

// The options of the view: setters, toggles for menus and keys, and going to a place.

namespace {

constexpr std::array<double, 16> font_sizes = {6,  7,  8,  9,  10, 11, 12, 13,
                                               14, 16, 18, 20, 24, 32, 48, 72};

// 0 for anything that is no number from 1.
std::size_t number_from_1(plist::value const& v) {
  return static_cast<std::size_t>(std::max<std::int64_t>(v.integer_or(0), 0));
}

// A place after the text or the line becomes its end, and one inside a character the end of that.
text::iterator capped_position(text::storage& storage, text::line_place const& place) {
  std::size_t const last = std::min(place.line, storage.lines()) - 1;
  std::size_t const unit = std::min(std::max<std::size_t>(place.column, 1) - 1, storage.size(last));
  return {last, text::cluster_start_from(storage.line_units(last), unit), &storage};
}

double bounded_font_size(double points) {
  return std::clamp<double>(std::round(points), settings::min_font_size, settings::max_font_size);
}

}  // namespace

void WynTextView::switchDidChange() {
  applyFreehandedMode();
  if (view_ != nullptr) {
    view_->set_foldings_enabled(foldingsEnabled());
    view_->set_wraps_indented(indentWrappedRows());
  }
  frameDidChange();
}

void WynTextView::frameDidChange() {
  setupTextFrame();
  followMarks();
  setNeedsDisplay();
}

void WynTextView::applyFreehandedMode() {
  if (view_ == nullptr || view_->freehanded_mode == freehandedEdit()) return;
  textview::view_will_change const scope(*this, true);
  view_->set_freehanded_mode(freehandedEdit());
}

void WynTextView::addToggle(std::string const& selector, std::function<bool()> get,
                            std::function<void()> flip) {
  addMethod(selector, [flip = std::move(flip)](plist::value const&) {
    flip();
    return plist::value();
  });
  std::string const query = selector.substr(0, selector.size() - 1) + "IsChecked:";
  addMethod(query, [get = std::move(get)](plist::value const&) { return plist::value(get()); });
}

void WynTextView::addExtensionMethods() {
  for (std::size_t n = 0; n < switches().size(); ++n)
    addToggle(
        switches()[n].row->changed_by.selector, [this, n] { return switches()[n].on; },
        [this, n] { flip(n); });
  addToggle(
      "toggleSoftTabs:", [this] { return softTabs(); }, [this] { setSoftTabs(!softTabs()); });
  addToggle(
      "toggleSoftWrap:", [this] { return softWrap(); }, [this] { setSoftWrap(!softWrap()); });
  addToggle(
      "toggleOverwriteMode:", [this] { return overwriteMode_; },
      [this] { setOverwriteMode(!overwriteMode_); });
  addToggle(
      "toggleSmartTyping:", [this] { return smartTyping_; },
      [this] { smartTyping_ = !smartTyping_; });
  // A margin shows where there is a column for it.
  for (char const* query : {"canToggleShowWrapMarginIndicator", "canToggleHighlightWrapMargin"})
    addMethod(query, [this](plist::value const&) { return plist::value(rightMargin() > 0); });

  addMethod("makeTextLarger:", [this](plist::value const&) {
    auto const it = std::upper_bound(font_sizes.begin(), font_sizes.end(), fontSize_);
    if (it == font_sizes.end()) return plist::value(false);
    setFontSize(*it);
    return plist::value();
  });
  addMethod("makeTextSmaller:", [this](plist::value const&) {
    auto const it = std::lower_bound(font_sizes.begin(), font_sizes.end(), fontSize_);
    if (it == font_sizes.begin()) return plist::value(false);
    setFontSize(*std::prev(it));
    return plist::value();
  });
  addMethod("canMakeTextLarger",
            [this](plist::value const&) { return plist::value(canMakeFontBigger()); });
  addMethod("canMakeTextSmaller",
            [this](plist::value const&) { return plist::value(canMakeFontSmaller()); });
  addMethod("showContextMenu:", [this](plist::value const&) {
    showContextMenuAtCaret();
    return plist::value();
  });
  addMethod("orderFrontFontPanel:", [this](plist::value const&) {
    chooseFont();
    return plist::value();
  });
  addMethod("makeTextStandardSize:", [this](plist::value const&) {
    setFontSize(12);
    return plist::value();
  });
  addMethod("goToLineNumber:", [this](plist::value const& line) {
    return plist::value(goToLineAndColumn({number_from_1(line), 1}));
  });
  addMethod("goToColumnNumber:", [this](plist::value const& column) {
    if (view_ == nullptr) return plist::value(false);
    std::size_t const line = view_->selection.current_mark.base.line + 1;
    return plist::value(number_from_1(column) != 0 &&
                        goToLineAndColumn({line, number_from_1(column)}));
  });
  addMethod("selectToLine:andColumn:", [this](plist::value const& to) {
    return plist::value(
        selectToLineAndColumn({number_from_1(to["line"]), number_from_1(to["column"])},
                              to["columnSelection"].boolean_or(false)));
  });
}

void WynTextView::setOverwriteMode(bool on) {
  if (on == overwriteMode_) return;
  overwriteMode_ = on;
  if (view_ != nullptr) view_->overwrite_mode = on;
  updateValueForKey(on, "overwriteMode");
  setNeedsDisplay();
}

void WynTextView::setFontSize(double points) {
  if (points == fontSize_) return;
  fontSize_ = points;
  settings::store().set("WynTextViewNormalFontSize", points);
  fontDidChange();
}

void WynTextView::fontDidChange() {
  frameDidChange();
  if (view_ != nullptr) centerSelectionInVisibleArea();
}

void WynTextView::chooseFont() {
  auto const chosen =
      platform::desktop::current().fonts().run({fontName_, fontSize_, antiAliasEnabled()});
  if (!chosen) return;
  fontName_ = chosen->family;
  settings::store().set("WynTextViewNormalFontName", fontName_);
  fontDidChange();
  setFontSize(bounded_font_size(chosen->point_size));
}

bool WynTextView::canMakeFontBigger() const {
  return fontSize_ < font_sizes.back();
}

bool WynTextView::canMakeFontSmaller() const {
  return fontSize_ > font_sizes.front();
}

bool WynTextView::goToLineAndColumn(text::line_place const& place) {
  if (view_ == nullptr || place.line < 1) return false;
  textview::view_will_change const scope(*this, true);
  view_->selection.set_caret(view_->in_view(capped_position(*view_->storage, place)));
  view_->center_selection_pending = true;
  return true;
}

bool WynTextView::selectToLineAndColumn(text::line_place const& place, bool columns) {
  if (view_ == nullptr || place.line < 1) return false;
  textview::view_will_change const scope(*this, true);
  view_->selection.select_to(view_->in_view(capped_position(*view_->storage, place)), columns);
  return true;
}

// The caret's line and column survive if the new text has them; the selection does not.
bool WynTextView::replacingText(std::function<bool()> const& replace) {
  if (view_ == nullptr) return replace();
  textview::view_will_change const scope(*this, false);
  std::uint32_t const memento = view_->storage->current_memento;
  text::iterator const caret = view_->selection.current_mark.base;
  bool const result = replace();
  if (view_->storage->current_memento != memento)
    view_->selection.set_caret(
        view_->in_view(capped_position(*view_->storage, {caret.line + 1, caret.column + 1})));
  return result;
}

// Defaults also change by the setters above, where each value stands already.
void WynTextView::userDefaultsDidChange(plist::value const& note) {
  auto& d = settings::store();
  std::string const font_name = d.string("WynTextViewNormalFontName");
  double const font_size = bounded_font_size(d.real("WynTextViewNormalFontSize"));
  bool const new_font = font_name != fontName_ || font_size != fontSize_;
  rulerColumn_ = static_cast<int>(d.integer("WynTextViewRulerColumn"));
  fontName_ = font_name;
  fontSize_ = font_size;
  followDefaults();
  // Not stored by the setter: the Insert key should not decide for the next start. So it is taken
  // over only when the default itself has changed.
  if (bool const on = d.boolean("WynTextViewOverwriteModeEnabled"); on != overwriteDefault_)
    overwriteMode_ = overwriteDefault_ = on;
  if (bool const on = d.boolean("WynTextViewSmartTypingEnabled"); on != smartTypingDefault_)
    smartTyping_ = smartTypingDefault_ = on;
  documentDefaultsDidChange(note);
  applyOptionsToView();
  styles_->drop_drawn();  // colours of the user's own stand in for those of a theme
  if (new_font || layout_.font().family.empty()) fontDidChange();
  publishAll();
  setNeedsDisplay();
}

void WynTextView::applyOptionsToView() {
  if (view_ == nullptr) return;
  text::set_counts_units_as_cells(!settings::store().boolean("WynTextViewWideCharactersEnabled"));
  if (view_->follow_cell_widths()) frameDidChange();
  view_->set_tab_size(tabSize());
  view_->set_treats_spaces_as_tabs(softTabs());
  view_->set_wraps_indented(indentWrappedRows());
  applySoftWrap();
  view_->overwrite_mode = overwriteMode_;
  if (view_->freehanded_mode != freehandedEdit()) view_->set_freehanded_mode(freehandedEdit());
  view_->set_foldings_enabled(foldingsEnabled());
}
