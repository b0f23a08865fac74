#pragma once

#include <optional>
#include <span>
#include <string>

/// The options of a text view that are on or off and that all views share. Each is kept in a user
/// default, which is also followed while the program runs. A setter stores what it is given, and
/// does nothing when the value stands. Main thread only.
///
/// A new one needs its accessors here, a row of the table in view_switches.cc, its default in
/// view_defaults.cc and its toggle in share/menus.plist.
class view_switches {
 public:
  bool lineNumbers() const { return lineNumbers_; }
  void setLineNumbers(bool on) { setSwitch(&view_switches::lineNumbers_, on); }
  bool showSoftWrapInGutter() const { return showSoftWrapInGutter_; }
  void setShowSoftWrapInGutter(bool on) { setSwitch(&view_switches::showSoftWrapInGutter_, on); }
  bool showBookmarksInGutter() const { return showBookmarksInGutter_; }
  void setShowBookmarksInGutter(bool on) { setSwitch(&view_switches::showBookmarksInGutter_, on); }
  /// A line at the right margin, if there is one.
  bool showWrapMarginIndicator() const { return showWrapMarginIndicator_; }
  void setShowWrapMarginIndicator(bool on) {
    setSwitch(&view_switches::showWrapMarginIndicator_, on);
  }
  /// With the line, a shade over what lies beyond.
  bool highlightWrapMargin() const { return highlightWrapMargin_; }
  void setHighlightWrapMargin(bool on) { setSwitch(&view_switches::highlightWrapMargin_, on); }
  /// Whether typing at the end of a line that gets wider than wrapColumns() breaks it.
  bool hardWrap() const { return hardWrap_; }
  void setHardWrap(bool on) { setSwitch(&view_switches::hardWrap_, on); }
  /// Turning it off unfolds everything.
  bool foldingsEnabled() const { return foldingsEnabled_; }
  void setFoldingsEnabled(bool on) { setSwitch(&view_switches::foldingsEnabled_, on); }
  /// Whether all blocks of a document are folded when it is first shown.
  bool openFilesFolded() const { return openFilesFolded_; }
  void setOpenFilesFolded(bool on) { setSwitch(&view_switches::openFilesFolded_, on); }
  /// Whether a new line begins with the white space of the one before, or as the language says.
  bool autoIndent() const { return autoIndent_; }
  void setAutoIndent(bool on) { setSwitch(&view_switches::autoIndent_, on); }
  /// Whether lines that are pasted are indented as fits the place.
  bool indentedPaste() const { return indentedPaste_; }
  void setIndentedPaste(bool on) { setSwitch(&view_switches::indentedPaste_, on); }
  bool freehandedEdit() const { return freehandedEdit_; }
  void setFreehandedEdit(bool on) { setSwitch(&view_switches::freehandedEdit_, on); }
  bool antiAliasEnabled() const { return antiAliasEnabled_; }
  void setAntiAliasEnabled(bool on) { setSwitch(&view_switches::antiAliasEnabled_, on); }
  bool showInvisibles() const { return showInvisibles_; }
  void setShowInvisibles(bool on) { setSwitch(&view_switches::showInvisibles_, on); }
  bool highlightCurrentLine() const { return highlightCurrentLine_; }
  void setHighlightCurrentLine(bool on) { setSwitch(&view_switches::highlightCurrentLine_, on); }

 protected:
  /// What of the view follows a switch.
  enum class effect { none, display, frame, freehanded_mode, foldings };
  struct view_switch {
    char const* name;
    char const* key;  ///< of its user default
    bool view_switches::*value;
    effect on_change;
  };

  ~view_switches() = default;

  static std::span<view_switch const> switches();
  bool value_of(view_switch const& option) const { return this->*option.value; }
  void setSwitch(view_switch const& option, bool on);
  /// Takes over the defaults that have changed.
  void followDefaults();
  /// What the language at hand says about showing invisibles goes before what the user has set;
  /// nothing for the user's word.
  void setScopedShowInvisibles(std::optional<bool> scoped);

  /// A switch has got another value.
  virtual void switchDidChange(effect what) = 0;

 private:
  void setSwitch(bool view_switches::*value, bool on);

  bool lineNumbers_ = false;
  bool showSoftWrapInGutter_ = true, showBookmarksInGutter_ = true;
  bool showWrapMarginIndicator_ = false, highlightWrapMargin_ = true;
  bool hardWrap_ = false;
  bool foldingsEnabled_ = true, openFilesFolded_ = false;
  bool autoIndent_ = true, indentedPaste_ = true;
  bool freehandedEdit_ = false;
  bool antiAliasEnabled_ = true;
  bool showInvisibles_ = false;
  bool highlightCurrentLine_ = false;
  std::optional<bool> scopedShowInvisibles_;
};
