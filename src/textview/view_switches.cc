#include "textview/view_switches.h"

#include "platform/user_defaults.h"

std::span<view_switches::view_switch const> view_switches::switches() {
  static constexpr view_switch entries[] = {
      {"lineNumbers", "WynTextViewLineNumbersEnabled", &view_switches::lineNumbers_, effect::frame},
      {"showSoftWrapInGutter", "WynTextViewShowSoftWrapInGutterEnabled",
       &view_switches::showSoftWrapInGutter_, effect::frame},
      {"showBookmarksInGutter", "WynTextViewShowBookmarksInGutterEnabled",
       &view_switches::showBookmarksInGutter_, effect::frame},
      {"antiAliasEnabled", "WynTextViewAntiAliasEnabled", &view_switches::antiAliasEnabled_,
       effect::frame},
      {"showInvisibles", "WynTextViewShowInvisiblesEnabled", &view_switches::showInvisibles_,
       effect::display},
      {"highlightCurrentLine", "WynTextViewHighlightCurrentLine",
       &view_switches::highlightCurrentLine_, effect::display},
      {"showWrapMarginIndicator", "WynTextViewShowWrapMarginIndicator",
       &view_switches::showWrapMarginIndicator_, effect::display},
      {"highlightWrapMargin", "WynTextViewHighlightWrapMargin",
       &view_switches::highlightWrapMargin_, effect::display},
      {"hardWrap", "WynTextViewHardWrapEnabled", &view_switches::hardWrap_, effect::none},
      {"foldingsEnabled", "WynTextViewFoldingsEnabled", &view_switches::foldingsEnabled_,
       effect::foldings},
      {"openFilesFolded", "WynTextViewOpenFilesFoldedEnabled", &view_switches::openFilesFolded_,
       effect::none},
      {"autoIndent", "WynTextViewAutoIndentEnabled", &view_switches::autoIndent_, effect::none},
      {"indentedPaste", "WynTextViewIndentedPasteEnabled", &view_switches::indentedPaste_,
       effect::none},
      {"freehandedEdit", "WynTextViewFreehandedModeEnabled", &view_switches::freehandedEdit_,
       effect::freehanded_mode},
  };
  return entries;
}

void view_switches::setSwitch(view_switch const& option, bool on) {
  if (value_of(option) == on) return;
  this->*option.value = on;
  platform::user_defaults::standard().set(option.key, on);
  switchDidChange(option.on_change);
}

// A missing row fails the first test that sets the option.
void view_switches::setSwitch(bool view_switches::*value, bool on) {
  for (view_switch const& candidate : switches())
    if (candidate.value == value) setSwitch(candidate, on);
}

// Defaults also change by the setters above, where each value stands already.
void view_switches::followDefaults() {
  auto& defaults = platform::user_defaults::standard();
  for (view_switch const& option : switches()) {
    bool const on = defaults.boolean(option.key);
    bool const is_scoped = option.value == &view_switches::showInvisibles_ && scopedShowInvisibles_;
    if (value_of(option) == on || is_scoped) continue;
    this->*option.value = on;
    switchDidChange(option.on_change);
  }
}

void view_switches::setScopedShowInvisibles(std::optional<bool> scoped) {
  scopedShowInvisibles_ = scoped;
  showInvisibles_ = scoped.value_or(
      platform::user_defaults::standard().boolean("WynTextViewShowInvisiblesEnabled"));
}
