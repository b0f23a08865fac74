#include "platform/desktop.h"
#include "platform/user_defaults.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <algorithm>
#include <array>
#include <cmath>

// The options of the view: setters, toggles for menus and keys, and going to a place.

namespace {

constexpr std::array<double, 16> font_sizes = {6,  7,  8,  9,  10, 11, 12, 13,
                                               14, 16, 18, 20, 24, 32, 48, 72};

platform::user_defaults& defaults() {
  return platform::user_defaults::standard();
}

// 0 for anything that is no number from 1.
std::size_t number_from_1(plist::value const& v) {
  return static_cast<std::size_t>(std::max<std::int64_t>(v.integer_or(0), 0));
}

// Line and column from 1; what lies behind the text or the line becomes its end.
text::iterator capped_position(text::storage& storage, std::size_t line, std::size_t column) {
  std::size_t const last = std::min(line, storage.lines()) - 1;
  return {last, std::min(std::max<std::size_t>(column, 1) - 1, storage.size(last)), &storage};
}

std::string capitalized(std::string name) {
  name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
  return name;
}

}  // namespace

void WynTextView::addToggle(std::string const& name, bool (WynTextView::*get)() const,
                            void (WynTextView::*set)(bool)) {
  std::string const toggle = "toggle" + capitalized(name);
  addMethod(toggle + ":", [this, get, set](plist::value const&) {
    (this->*set)(!(this->*get)());
    return plist::value();
  });
  addMethod(toggle + "IsChecked:",
            [this, get](plist::value const&) { return plist::value((this->*get)()); });
}

void WynTextView::addExtensionMethods() {
  addToggle("softTabs", &WynTextView::softTabs, &WynTextView::setSoftTabs);
  addToggle("lineNumbers", &WynTextView::lineNumbers, &WynTextView::setLineNumbers);
  addToggle("softWrap", &WynTextView::softWrap, &WynTextView::setSoftWrap);
  addToggle("showSoftWrapInGutter", &WynTextView::showSoftWrapInGutter,
            &WynTextView::setShowSoftWrapInGutter);
  addToggle("showBookmarksInGutter", &WynTextView::showBookmarksInGutter,
            &WynTextView::setShowBookmarksInGutter);
  addToggle("overwriteMode", &WynTextView::overwriteMode, &WynTextView::setOverwriteMode);
  addToggle("freehandedEdit", &WynTextView::freehandedEdit, &WynTextView::setFreehandedEdit);
  addToggle("antiAliasEnabled", &WynTextView::antiAliasEnabled, &WynTextView::setAntiAliasEnabled);
  addToggle("showInvisibles", &WynTextView::showInvisibles, &WynTextView::setShowInvisibles);
  addToggle("highlightCurrentLine", &WynTextView::highlightCurrentLine,
            &WynTextView::setHighlightCurrentLine);

  addMethod("takeTabSizeFrom:", [this](plist::value const& sender) {
    std::int64_t const size = sender.integer_or(0);
    if (0 < size && size <= 64) setTabSize(static_cast<unsigned>(size));
    return plist::value();
  });
  addMethod("takeTabSizeFromIsChecked:", [this](plist::value const& sender) {
    return plist::value(sender.integer_or(0) == static_cast<std::int64_t>(tabSize_));
  });
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
  addMethod("makeTextStandardSize:", [this](plist::value const&) {
    setFontSize(12);
    return plist::value();
  });
  addMethod("goToLineNumber:", [this](plist::value const& line) {
    return plist::value(goToLineAndColumn(number_from_1(line), 1));
  });
  addMethod("goToColumnNumber:", [this](plist::value const& column) {
    if (view_ == nullptr) return plist::value(false);
    std::size_t const line = view_->selection.current_mark.base.line + 1;
    return plist::value(number_from_1(column) != 0 &&
                        goToLineAndColumn(line, number_from_1(column)));
  });
  addMethod("selectToLine:andColumn:", [this](plist::value const& to) {
    return plist::value(selectToLineAndColumn(number_from_1(to["line"]),
                                              number_from_1(to["column"]),
                                              to["columnSelection"].boolean_or(false)));
  });
}

void WynTextView::setTabSize(unsigned columns) {
  if (columns == tabSize_ || columns == 0) return;
  tabSize_ = columns;
  if (view_ != nullptr) {
    view_will_change const scope(*this, true);
    view_->set_tab_size(columns);
  }
  defaults().set("WynTextViewTabSize", columns);
  updateValueForKey(columns, "tabSize");
  setNeedsDisplay();
}

void WynTextView::setSoftTabs(bool on) {
  if (on == softTabs_) return;
  softTabs_ = on;
  if (view_ != nullptr) view_->set_treats_spaces_as_tabs(on);
  defaults().set("WynTextViewSoftTabs", on);
  updateValueForKey(on, "softTabs");
}

void WynTextView::setLineNumbers(bool on) {
  if (on == lineNumbers_) return;
  lineNumbers_ = on;
  defaults().set("WynTextViewLineNumbersEnabled", on);
  setupTextFrame();
  setNeedsDisplay();
}

void WynTextView::setSoftWrap(bool on) {
  if (on == softWrap_) return;
  softWrap_ = on;
  applySoftWrap();
  defaults().set("WynTextViewSoftWrap", on);
  setupTextFrame();
  setNeedsDisplay();
  if (view_ != nullptr) centerSelectionInVisibleArea();
}

void WynTextView::setShowSoftWrapInGutter(bool on) {
  if (on == showSoftWrapInGutter_) return;
  showSoftWrapInGutter_ = on;
  defaults().set("WynTextViewShowSoftWrapInGutterEnabled", on);
  setupTextFrame();
  setNeedsDisplay();
}

void WynTextView::setShowBookmarksInGutter(bool on) {
  if (on == showBookmarksInGutter_) return;
  showBookmarksInGutter_ = on;
  defaults().set("WynTextViewShowBookmarksInGutterEnabled", on);
  setupTextFrame();
  setNeedsDisplay();
}

void WynTextView::setOverwriteMode(bool on) {
  if (on == overwriteMode_) return;
  overwriteMode_ = on;
  if (view_ != nullptr) view_->overwrite_mode = on;
  updateValueForKey(on, "overwriteMode");
  setNeedsDisplay();
}

void WynTextView::setFreehandedEdit(bool on) {
  if (on == freehandedMode_) return;
  freehandedMode_ = on;
  if (view_ != nullptr) {
    view_will_change const scope(*this, true);
    view_->set_freehanded_mode(on);
  }
  defaults().set("WynTextViewFreehandedModeEnabled", on);
}

void WynTextView::setAntiAliasEnabled(bool on) {
  if (on == antiAliasEnabled_) return;
  antiAliasEnabled_ = on;
  defaults().set("WynTextViewAntiAliasEnabled", on);
  setupTextFrame();
  setNeedsDisplay();
}

void WynTextView::setShowInvisibles(bool on) {
  if (on == showInvisibles_) return;
  showInvisibles_ = on;
  defaults().set("WynTextViewShowInvisiblesEnabled", on);
  setNeedsDisplay();
}

void WynTextView::setHighlightCurrentLine(bool on) {
  if (on == highlightCurrentLine_) return;
  highlightCurrentLine_ = on;
  defaults().set("WynTextViewHighlightCurrentLine", on);
  setNeedsDisplay();
}

void WynTextView::setFontSize(double points) {
  if (points == fontSize_) return;
  fontSize_ = points;
  defaults().set("WynTextViewNormalFontSize", points);
  setupTextFrame();
  setNeedsDisplay();
  if (view_ != nullptr) centerSelectionInVisibleArea();
}

bool WynTextView::canMakeFontBigger() const {
  return fontSize_ < font_sizes.back();
}

bool WynTextView::canMakeFontSmaller() const {
  return fontSize_ > font_sizes.front();
}

bool WynTextView::goToLineAndColumn(std::size_t line, std::size_t column) {
  if (view_ == nullptr || line < 1) return false;
  view_will_change const scope(*this, true);
  view_->selection.set_caret(view_->in_view(capped_position(*view_->storage, line, column)));
  view_->center_selection_pending = true;
  return true;
}

bool WynTextView::selectToLineAndColumn(std::size_t line, std::size_t column, bool columns) {
  if (view_ == nullptr || line < 1) return false;
  view_will_change const scope(*this, true);
  view_->selection.select_to(view_->in_view(capped_position(*view_->storage, line, column)),
                             columns);
  return true;
}

// The caret's line and column survive if the new text has them; the selection does not.
bool WynTextView::replacingText(std::function<bool()> const& replace) {
  if (view_ == nullptr) return replace();
  view_will_change const scope(*this, false);
  std::uint32_t const memento = view_->storage->current_memento;
  text::iterator const caret = view_->selection.current_mark.base;
  bool const result = replace();
  if (view_->storage->current_memento != memento)
    view_->selection.set_caret(
        view_->in_view(capped_position(*view_->storage, caret.line + 1, caret.column + 1)));
  return result;
}

// Defaults also change by the setters above, where each value stands already.
void WynTextView::userDefaultsDidChange() {
  auto& d = defaults();
  std::string const font_name = d.string("WynTextViewNormalFontName", "monospace");
  double const font_size =
      std::clamp(std::round(d.real("WynTextViewNormalFontSize", 12)), 4.0, 200.0);
  bool const anti_alias = d.boolean("WynTextViewAntiAliasEnabled", true);
  bool const wrap_marks = d.boolean("WynTextViewShowSoftWrapInGutterEnabled", true);
  bool const bookmarks = d.boolean("WynTextViewShowBookmarksInGutterEnabled", true);
  bool const new_frame = font_name != fontName_ || font_size != fontSize_ ||
                         anti_alias != antiAliasEnabled_ || wrap_marks != showSoftWrapInGutter_ ||
                         bookmarks != showBookmarksInGutter_ ||
                         d.boolean("WynTextViewLineNumbersEnabled") != lineNumbers_;
  fontName_ = font_name;
  fontSize_ = font_size;
  antiAliasEnabled_ = anti_alias;
  lineNumbers_ = d.boolean("WynTextViewLineNumbersEnabled");
  showSoftWrapInGutter_ = wrap_marks;
  showBookmarksInGutter_ = bookmarks;
  showInvisibles_ = d.boolean("WynTextViewShowInvisiblesEnabled");
  highlightCurrentLine_ = d.boolean("WynTextViewHighlightCurrentLine");
  // Not stored by the setter: the Insert key should not decide for the next start. So it is taken
  // over only when the default itself has changed.
  if (bool const on = d.boolean("WynTextViewOverwriteModeEnabled"); on != overwriteDefault_)
    overwriteMode_ = overwriteDefault_ = on;
  freehandedMode_ = d.boolean("WynTextViewFreehandedModeEnabled");
  softTabs_ = d.boolean("WynTextViewSoftTabs");
  tabSize_ =
      static_cast<unsigned>(std::clamp<std::int64_t>(d.integer("WynTextViewTabSize", 4), 1, 64));
  applyOptionsToView();
  if (new_frame || layout_.font().family.empty()) setupTextFrame();
  publishAll();
  setNeedsDisplay();
}

void WynTextView::applyOptionsToView() {
  if (view_ == nullptr) return;
  view_->set_tab_size(tabSize_);
  view_->set_treats_spaces_as_tabs(softTabs_);
  applySoftWrap();
  view_->overwrite_mode = overwriteMode_;
  if (view_->freehanded_mode != freehandedMode_) view_->set_freehanded_mode(freehandedMode_);
}
