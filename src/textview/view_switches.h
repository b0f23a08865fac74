#pragma once

#include "settings/setting.h"

#include <optional>
#include <string_view>
#include <vector>

namespace textview {

/// The options of a text view that are on or off and that all views share: the switches among the
/// settings (settings/table.h). Each has an action that turns it on or off and is ticked in menus.
/// Its user default is followed while the program runs. Main thread only.
class view_switches {
 public:
  bool lineNumbers() const { return isOn("WynTextViewLineNumbersEnabled"); }
  bool showSoftWrapInGutter() const { return isOn("WynTextViewShowSoftWrapInGutterEnabled"); }
  bool showBookmarksInGutter() const { return isOn("WynTextViewShowBookmarksInGutterEnabled"); }
  /// A line at the right margin, if there is one.
  bool showWrapMarginIndicator() const { return isOn("WynTextViewShowWrapMarginIndicator"); }
  /// With the line, a shade over what lies beyond.
  bool highlightWrapMargin() const { return isOn("WynTextViewHighlightWrapMargin"); }
  /// Whether typing at the end of a line that gets wider than wrapColumns() breaks it.
  bool hardWrap() const { return isOn("WynTextViewHardWrapEnabled"); }
  /// Turning it off unfolds everything.
  bool foldingsEnabled() const { return isOn("WynTextViewFoldingsEnabled"); }
  /// Whether all blocks of a document are folded when it is first shown.
  bool openFilesFolded() const { return isOn("WynTextViewOpenFilesFoldedEnabled"); }
  /// Whether a new line begins with the white space of the one before, or as the language says.
  bool autoIndent() const { return isOn("WynTextViewAutoIndentEnabled"); }
  /// Whether lines that are pasted are indented as fits the place.
  bool indentedPaste() const { return isOn("WynTextViewIndentedPasteEnabled"); }
  bool freehandedEdit() const { return isOn("WynTextViewFreehandedModeEnabled"); }
  bool antiAliasEnabled() const { return isOn("WynTextViewAntiAliasEnabled"); }
  bool showInvisibles() const { return isOn(show_invisibles); }
  bool showBlanks() const { return isOn("WynTextViewShowBlanks"); }
  /// Whether rows that continue a line begin in the column of its text.
  bool indentWrappedRows() const { return isOn("WynTextViewIndentWrappedRows"); }
  bool indentGuides() const { return isOn("WynTextViewIndentGuides"); }
  bool matchingBrackets() const { return isOn("WynTextViewMatchingBrackets"); }
  /// Whether the other places of a selected word are marked.
  bool marksSelectedWord() const { return isOn("WynTextViewSelectedWord"); }
  bool smoothScrolling() const { return isOn("WynTextViewSmoothScrolling"); }
  bool highlightCurrentLine() const { return isOn("WynTextViewHighlightCurrentLine"); }

 protected:
  struct view_switch {
    settings::setting const* row;
    bool on;
  };

  /// All have their defaults until followDefaults().
  view_switches();
  ~view_switches() = default;

  std::vector<view_switch> const& switches() const { return switches_; }
  /// Turns the switch at this index of switches() on or off, and stores that.
  void flip(std::size_t index);
  /// Takes over the defaults that have changed.
  void followDefaults();
  /// What the language at hand says about showing invisibles goes before what the user has set;
  /// nothing for the user's word.
  void setScopedShowInvisibles(std::optional<bool> scoped);

  /// A switch has got another value.
  virtual void switchDidChange() = 0;

 private:
  static constexpr char const* show_invisibles = "WynTextViewShowInvisiblesEnabled";

  /// `key` must be that of a switch.
  bool isOn(std::string_view key) const;

  std::vector<view_switch> switches_;
  std::optional<bool> scopedShowInvisibles_;
};

}  // namespace textview
