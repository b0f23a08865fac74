#pragma once

#include "actions/action_map.h"
#include "bundles/key_binding_target.h"
#include "grammar/scope_path.h"
#include "platform/notification_center.h"
#include "platform/responder.h"
#include "platform/run_loop.h"
#include "platform/view.h"
#include "text/view.h"
#include "textview/TextLayout.h"
#include "textview/scope_style.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

class WynDocument;
class WynISearchWindow;
class find_highlights;
class indent_patterns;
namespace grammar {
class tokenize_filter;
}

/// The editing view: it takes events, finds the action that each stands for and runs it on the
/// text::view of its document. Knows no widget: what it needs of one is a platform::view_host.
///
/// Everything the user does ends in performSelectorWithObject or insertText, inside a
/// view_will_change scope. Actions with names, such as `moveWordLeft:`, are in an action_map;
/// methods of this class that can be called by name are entered with addMethod in the file that
/// defines them. Main thread only.
class WynTextView : public platform::responder,
                    public platform::view_client,
                    public key_binding_target {
 public:
  WynTextView();
  ~WynTextView() override;
  WynTextView(WynTextView const&) = delete;
  WynTextView& operator=(WynTextView const&) = delete;

  /// Enters the default values of the options that this class reads.
  static void registerDefaults();

  /// Shows another document, or none. The one shown before gets its view back.
  void setDocument(std::shared_ptr<WynDocument> document);
  std::shared_ptr<WynDocument> const& document() const { return document_; }
  /// Stores in the view what is in sight, so that it comes back there when it is shown again.
  void snapshotMetaData();
  /// Null as long as there is no document. Owned by the document.
  text::view* view() const { return view_; }
  TextLayout const& layout() const { return layout_; }
  platform::view_host* host() const { return host_; }

  /// The menu for a click with the right button.
  void setContextMenu(std::vector<platform::menu_item> items) { contextMenu_ = std::move(items); }

  /// Gets the values that the status bar shows, under the names given in platform/window.h.
  using value_observer = std::function<void(std::string_view key, plist::value const& value)>;
  void bind(value_observer observer);
  void updateValueForKey(plist::value const& value, std::string_view key);

  // Dispatch by name
  bool respondsToSelector(std::string_view selector) const override;
  std::vector<std::string> selectors() const override;
  plist::value performSelectorWithObject(std::string_view selector,
                                         plist::value const& object) override;
  bool tryToPerformWith(std::string_view selector, plist::value const& object) override;
  void doCommandBySelector(std::string_view selector);
  void interpretKeyEvents(platform::key_event const& event) override;

  // Editing (WynTextView_editing.cc)
  void insertText(std::u16string_view text);
  void insertText(plist::value const& text) override;
  void deleteBackward();
  void deleteForward();
  void deleteToEndOfParagraph();
  void insertNewline();
  void insertTab();

  // Options (WynTextView_Extension.cc). Setters do nothing when the value stands.
  bool lineNumbers() const { return lineNumbers_; }
  void setLineNumbers(bool on) { setSwitch(&WynTextView::lineNumbers_, on); }
  bool showSoftWrapInGutter() const { return showSoftWrapInGutter_; }
  void setShowSoftWrapInGutter(bool on) { setSwitch(&WynTextView::showSoftWrapInGutter_, on); }
  bool showBookmarksInGutter() const { return showBookmarksInGutter_; }
  void setShowBookmarksInGutter(bool on) { setSwitch(&WynTextView::showBookmarksInGutter_, on); }
  /// A line at the right margin, if there is one.
  bool showWrapMarginIndicator() const { return showWrapMarginIndicator_; }
  void setShowWrapMarginIndicator(bool on) {
    setSwitch(&WynTextView::showWrapMarginIndicator_, on);
  }
  /// With the line, a shade over what lies beyond.
  bool highlightWrapMargin() const { return highlightWrapMargin_; }
  void setHighlightWrapMargin(bool on) { setSwitch(&WynTextView::highlightWrapMargin_, on); }
  /// Whether typing at the end of a line that gets wider than wrapColumns() breaks it.
  bool hardWrap() const { return hardWrap_; }
  void setHardWrap(bool on) { setSwitch(&WynTextView::hardWrap_, on); }
  /// Turning it off unfolds everything.
  bool foldingsEnabled() const { return foldingsEnabled_; }
  void setFoldingsEnabled(bool on) { setSwitch(&WynTextView::foldingsEnabled_, on); }
  /// Whether a new line begins with the white space of the one before, or as the language says.
  bool autoIndent() const { return autoIndent_; }
  void setAutoIndent(bool on) { setSwitch(&WynTextView::autoIndent_, on); }
  /// Whether lines that are pasted are indented as fits the place.
  bool indentedPaste() const { return indentedPaste_; }
  void setIndentedPaste(bool on) { setSwitch(&WynTextView::indentedPaste_, on); }
  /// Whether brackets and quotes are typed in pairs. The setter is for this view alone.
  bool smartTyping() const { return smartTyping_; }
  void setSmartTyping(bool on) { smartTyping_ = on; }
  bool overwriteMode() const { return overwriteMode_; }
  void setOverwriteMode(bool on);
  bool freehandedEdit() const { return freehandedMode_; }
  void setFreehandedEdit(bool on) { setSwitch(&WynTextView::freehandedMode_, on); }
  bool antiAliasEnabled() const { return antiAliasEnabled_; }
  void setAntiAliasEnabled(bool on) { setSwitch(&WynTextView::antiAliasEnabled_, on); }
  bool showInvisibles() const { return showInvisibles_; }
  void setShowInvisibles(bool on) { setSwitch(&WynTextView::showInvisibles_, on); }
  bool highlightCurrentLine() const { return highlightCurrentLine_; }
  void setHighlightCurrentLine(bool on) { setSwitch(&WynTextView::highlightCurrentLine_, on); }
  /// In points.
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  bool canMakeFontBigger() const;
  bool canMakeFontSmaller() const;
  /// Lets the user choose family and size.
  void chooseFont();

  // Options of one document (WynTextView_ScopedSettings.cc). A setter changes what views opened
  // later begin with; those that are open keep their own.
  unsigned tabSize() const { return documentOptions_.tabSize; }  // columns, at least 1
  void setTabSize(unsigned columns);
  bool softTabs() const { return documentOptions_.softTabs; }
  void setSoftTabs(bool on);
  bool treatsSpacesAsTabs() const { return documentOptions_.softTabs; }
  /// Whether lines are cut into rows of wrapColumns().
  bool softWrap() const { return documentOptions_.softWrap; }
  void setSoftWrap(bool on);
  /// The column at which lines are wrapped and the margin is drawn; below 1 there is none, and they
  /// are wrapped at the edge of what is visible.
  int rightMargin() const { return documentOptions_.rightMargin; }
  void setRightMargin(int column);
  /// The width of a wrapped row: the right margin, or as many columns as are visible. There must be
  /// a document.
  unsigned wrapColumns() const;
  /// The menu items for the columns that the user has collected.
  static std::vector<platform::menu_item> wrapColumnItems();

  plist::value scopedValueForKeyInDomain(std::string_view key, std::string_view domain) const;
  void setScopedValueForKeyInDomain(plist::value value, std::string_view key,
                                    std::string_view domain);

  /// Lines and columns from 1; a column counts units. False when there is no such line or no
  /// document; a column behind the line's end stands for that end.
  bool goToLineAndColumn(std::size_t line, std::size_t column);
  /// Extends the selection from its first mark; `columns` makes it a rectangle.
  bool selectToLineAndColumn(std::size_t line, std::size_t column, bool columns);

  /// Runs something that may exchange the whole text, such as reading the file again, and gives
  /// its result. The caret stays on its line where there still is one.
  bool replacingText(std::function<bool()> const& replace);

  // Language, scopes and styles (WynTextView_StyleSheet.cc). Languages are named by uuid, "" for
  // none.
  /// Posted with this as the object and QNDocumentURL, of a document with a file,
  /// QNDocumentLanguageName and QNDocumentLanguageScope in the info.
  static constexpr char const* language_did_change = "QNDocumentLanguageDidChange";
  std::string const& languageUUID() const { return languageUUID_; }
  /// The name of the language, "" for none.
  std::string const& currentMode() const { return currentMode_; }
  std::string languageChoiceForFileWithFirstLine(std::string const& path,
                                                 std::string const& first_line) const;
  std::string languageChoiceForCurrentFile() const;
  /// One that isn't known stands for the choice for the current file. With `learn` files of this
  /// name get the language from now on.
  void changeLanguageToAndLearn(std::string const& uuid, bool learn);
  void learnFileAssociation(std::string const& uuid);
  /// Null before the document has had a language. Owned by the view.
  grammar::tokenize_filter* tokenizer() const { return tokenizer_; }
  bit_stack::storage graphPathForIterator(text::iterator const& it) const;
  /// Of the caret, or what is common to all of the selection; if `wait`, when the worker has got
  /// there or after the tokenizer's patience.
  bit_stack::storage graphPathForCaretWait(bool wait) const;
  /// The names of the scopes, outermost first.
  std::vector<std::string> scopeForContext(bit_stack::storage const& path) const;
  std::vector<std::string> currentContext() const {
    return scopeForContext(graphPathForCaretWait(true));
  }
  /// The merged settings of theme and bundles for a path; nothing without a document. A look-up
  /// after the first time.
  plist::value stylesForContext(bit_stack::storage const& path) const;
  plist::value stylesForCaretWait(bool wait) const {
    return stylesForContext(graphPathForCaretWait(wait));
  }
  plist::value stylesForCaret() const { return stylesForCaretWait(true); }
  /// The rules of a theme, as it is set until another one is selected; nothing for the colours of
  /// the desktop.
  void setCurrentStyleSheet(plist::value rules);
  /// What applies to these scopes, before it is merged.
  style_candidates styleCandidates(std::vector<std::string> const& scopes) const;
  /// How text with a path of the tokenizer is drawn; 0 is the empty path, also without a tokenizer.
  /// Good until something else is drawn.
  drawn_style const& styleOfPath(grammar::path_tree::id id) const;

  /// Tells the user about scopes and style at the caret.
  void showScope();

  // Symbols (WynTextView_Symbols.cc)
  static constexpr char const* function_pop_up_did_change = "WynFunctionPopUpDidChange";
  /// Dictionaries of `name` and `line`, counted from 1, in the order of the text. Made anew half a
  /// second after what changes the text or its tokens.
  plist::array const& functionPopUp() const { return functionPopUp_; }
  /// Makes it now, of the tokens known so far. There must be a document.
  void buildFunctionPopUp();
  /// The name of the last one that begins above the caret or on its line; there must be a document.
  std::string symbolAtCaret() const;

  // Find and replace (WynTextView_Find.cc). Options are those of WynFindManager; the answer has
  // `statusText`, and whether anything was `found`.
  plist::value findWithOptions(plist::dictionary options);
  /// The number of replacements; 0 with a message for the user if something is wrong.
  std::size_t internalReplaceAllError(plist::value const& options, std::string& error);
  /// The matches of the find panel's text in sight; of a view that shows a document.
  std::vector<std::pair<text::iterator, text::iterator>> const& shownMatches() const;

  // Incremental search (WynTextView_ISearch.cc)
  /// Null while there is none.
  WynISearchWindow* incrementalSearchWindow() const { return iSearchWindow_.get(); }
  void openIncrementalSearchWindow(bool backward);
  void closeIncrementalSearchWindow();
  bool findNextIncrementalSearchString(bool from_end);
  bool findPreviousIncrementalSearchString(bool from_start);

  // Brackets (WynTextView_pairs.cc)
  /// Selects the innermost pair of brackets round the selection and what is between; false if there
  /// is none.
  bool selectBlock();
  /// An opening unit that is shown for a moment, since its partner has just been typed.
  std::optional<platform::rect> const& flashed() const { return flashed_; }

  // Drag and drop (WynTextView_dragging.cc)
  void startDragForEvent(platform::mouse_event const& event);
  /// From elsewhere things are copied; within the view they are moved, unless the keys held leave
  /// only copying. Nothing can be dropped on the selection that is dragged.
  std::uint32_t dragOperationForInfo(platform::drag_info const& info) const;
  /// Where something would be dropped; nothing while nothing is dragged over the view.
  std::optional<platform::rect> dropCaret() const;

  // platform::view_client
  void set_host(platform::view_host* host) override;
  void draw(platform::graphics& g, platform::rect const& dirty) override;
  platform::size size_for(int columns, int rows) const override;
  void key_down(platform::key_event const& event) override;
  void modifiers_changed(std::uint32_t modifiers) override;
  void mouse_down(platform::mouse_event const& event) override;
  void mouse_dragged(platform::mouse_event const& event) override;
  void mouse_up(platform::mouse_event const& event) override;
  platform::cursor cursor_at(platform::point p, std::uint32_t modifiers) const override;
  std::uint32_t dragging_updated(platform::drag_info const& info) override;
  void dragging_exited() override;
  bool perform_drag_operation(platform::drag_info const& info) override;
  std::optional<platform::tool_tip> tool_tip_at(platform::point p) const override;
  void insert_text(std::u16string_view text) override;
  void set_marked_text(std::u16string_view text, std::size_t offset, std::size_t length) override;
  void unmark_text() override;
  platform::rect caret_rect() const override;
  std::u16string selected_text() const override;
  std::u16string line_text(std::size_t& caret_offset) const override;
  void visible_rect_changed() override;
  void focus_changed() override;

  /// What an input method is composing at the caret; it is no part of the text yet.
  std::u16string const& markedText() const { return markedText_; }
  /// From where the caret would stand to where it is drawn inside the marked text, in pixels.
  double markedTextOffset() const;

  /// Where the mark of folded text stands behind a row; empty without one.
  platform::rect foldEllipsis(std::size_t row) const;

  /// The row and column ranges of the visible part without the gutter.
  platform::rect visibleTextRect() const;
  /// Scrolls as little as possible to show `r`, which is left of neither gutter nor margin.
  void scrollRectToVisible(platform::rect const& r);
  void centerSelectionInVisibleArea();
  /// To where the view was when it was last shown, if it ever was; else the caret comes in sight.
  void scrollToStoredPosition();
  /// Now and once more at the loop's next turn, when a frame that has just grown is laid out.
  void centerSelectionNowAndLater();
  bool caretIsVisible() const { return caretVisible_; }

 protected:
  plist::value query(std::string_view name, plist::value const& argument) override;

 private:
  friend class view_will_change;

  enum class granularity { unit, word, line };
  enum class drag_arm { none, waiting, armed };

  struct plain_switch {
    char const* name;
    char const* key;  // of its user default
    bool WynTextView::*value;
    void (WynTextView::*apply)();  // after a change; null for nothing
  };
  static plain_switch const plainSwitches[];

  struct document_options {
    unsigned tabSize = 4;
    bool softTabs = false, softWrap = false;
    int rightMargin = -1;
  };

  void addEditingMethods();
  void addExtensionMethods();
  void addScrollingMethods();
  void addBookmarkMethods();
  void addFoldingMethods();
  void addFindMethods();
  void addISearchMethods();
  void addStyleSheetMethods();
  void addPairMethods();
  /// Enters an action that runs inside a view_will_change scope.
  void addAction(std::string selector, std::function<void()> action);
  void addToggle(std::string const& name, std::function<bool()> get, std::function<void(bool)> set);
  void setSwitch(plain_switch const& changed, bool on);
  void setSwitch(bool WynTextView::*value, bool on);
  void frameDidChange();
  void fontDidChange();
  void applyFreehandedMode();
  void applyFoldingsEnabled();

  // Options of one document (WynTextView_ScopedSettings.cc)
  void addScopedSettingMethods();
  std::string_view rootScope() const { return rootScope_; }
  document_options storedOptions() const;
  void initializeSettings();
  void documentDefaultsDidChange();
  void wrappingDidChange();
  bool isOwnWrapColumn() const;
  plist::value askForRightMargin();

  void insertTyped(std::u16string_view text, bool closes);
  void breakTypedLine();
  plist::value undoOrRedo(bool undo);
  void userDefaultsDidChange();
  void applyOptionsToView();
  void attachView();
  void detachView();
  void openFolded();
  void publishAll();

  bool findAgain(bool backward);
  void showFindNote(std::string const& note);
  plist::value replaceAllIn(char const* scope);
  std::string performFind(std::string const& action, plist::value const& options, bool& found);
  bool selectIncrementalMatch(text::iterator (*find)(text::view*, std::u16string const&, bool),
                              bool further);

  // Language and styles (WynTextView_StyleSheet.cc)
  void attachTokenizer();
  void startTokenizer();
  void detachTokenizer();
  void setRules(plist::value const& language);
  void postLanguageDidChange();
  void publishLanguage();
  void filenameDidChange(plist::value const& info);
  void languagesDidChange();
  void preferencesDidChange();
  void resetDisplay();
  plist::value const& currentStyleSheet() const;
  void dropStyles();

  // Symbols (WynTextView_Symbols.cc)
  void updateFunctionPopUp(bool changed);
  void delayedUpdateFunctionPopUp();
  void setCurrentSymbol(std::string const& name);

  // Layout and scrolling (WynTextView_scrolling.cc)
  void setupTextFrame();
  void recalcFrameSize();
  void updateGutterWidth();
  unsigned fittingColumns() const;
  double frameWidth() const;
  bool updateScreenWidth();
  void applySoftWrap();
  void setNeedsDisplay();
  void setNeedsDisplayOfLines(std::size_t first, std::size_t last);
  void setNeedsDisplayOfCurrentLines(platform::rect const& old_caret);
  void scrollByRows(double rows);
  void moveByPage(int direction, bool select);

  // Caret (WynTextView_scrolling.cc)
  void showCaret();
  void blinkCaret();

  // Bookmarks (WynTextView_Bookmarks.cc)
  void toggleBookmark(std::size_t line, std::size_t column);
  bool toggleBookmarkAtClick(platform::point p);
  void goToBookmark(text::pos (text::view::*find)(std::size_t line) const);

  // Folding (WynTextView_Folding.cc)
  std::pair<std::size_t, std::size_t> selectedLines() const;  // first and last
  bool isFolded(std::size_t row) const;
  std::optional<std::size_t> rowOfEllipsisAt(platform::point p) const;
  bool toggleFoldingAtClick(platform::mouse_event const& event);

  // Mouse (WynTextView_events.cc)
  void selectAtClick(platform::mouse_event const& event);
  void selectAtArmedClick(std::uint32_t modifiers);
  void extendSelectionTo(platform::point p);
  void setMousePosition(platform::point p);
  platform::point mousePosition() const;
  void selectToMouse();
  void toggleColumnsOnOptionTap(std::uint32_t old_flags, std::uint32_t flags);
  void showContextMenu(platform::point p);
  void startAutoscroll();
  void autoscrollTimerFired();
  void pastePrimarySelectionAt(platform::point p);
  void selectionDidChange();
  void publishPrimarySelection();
  void abandonMarkedText();

  // Brackets (WynTextView_pairs.cc)
  plist::value pairsAtCaret(char const* key) const;
  bool mayOpenPair(text::char_t typed) const;
  void flashPartner();
  void flash(platform::rect const& r);
  void endFlash();

  // Typing pairs (WynTextView_smartTyping.cc)
  bool selectLiveClosing(text::char_t typed);
  bool surroundSelection(text::char_t typed);
  void completePair(text::char_t typed);
  void endEmptyPair(bool both);

  // Indentation (WynTextView_Indentation.cc)
  void addIndentationMethods();
  indent_patterns const& indentPatterns();
  std::size_t currentIndentForContentAtLine(text::unit_view content, std::size_t number);
  bool indentsBySpaces(std::size_t number) const;
  void indentLine(std::size_t number);
  void indentSelectedLines();
  bool mayCloseBlock();
  void indentClosingLine();
  std::u16string indentOfLine(std::size_t number) const;
  bool pasteClip();
  std::u16string fittedClip(std::u16string const& clip);

  // Drag and drop (WynTextView_dragging.cc)
  bool armDragAtClick(platform::mouse_event const& event);
  void disarmDrag();
  bool isInSelection(platform::point p) const;
  void setDropPosition(platform::point p);
  void redrawDropCaret();
  void scrollTowardsDrop();
  bool dropText(platform::drag_info const& info, text::view_iterator const& to, bool move);
  void dropFiles(plist::value const& files, text::view_iterator const& to, std::uint32_t modifiers);
  bool insertDropped(std::u16string_view text, text::view_iterator const& to);

  std::shared_ptr<WynDocument> document_;
  text::view* view_ = nullptr;
  platform::view_host* host_ = nullptr;
  value_observer observer_;
  action_map actions_;
  title_action_map titles_;
  TextLayout layout_;
  int viewChangeNesting_ = 0;
  platform::notification_center::token defaultsToken_, documentToken_, themeToken_;
  std::vector<platform::notification_center::token> bundleTokens_;

  std::string languageUUID_, currentMode_, rootScope_;
  grammar::tokenize_filter* tokenizer_ = nullptr;
  using style_cache = std::map<bit_stack::storage, plist::value>;
  mutable std::unique_ptr<style_cache> styleCache_;
  mutable std::optional<std::u16string> typingOpeners_;          // of the pairs of all scopes
  mutable std::vector<std::optional<drawn_style>> drawnStyles_;  // by the tokenizer's paths
  mutable plist::value currentStyleSheet_;                       // the rules of the theme
  mutable bool hasStyleSheet_ = false;
  plist::array functionPopUp_;
  std::uint32_t symbolsMemento_ = 0;  // of the text of which the list was made
  std::string currentSymbol_;
  std::unique_ptr<platform::timer> symbolTimer_;
  std::optional<bool> scopedShowInvisibles_;  // goes before what the user has set

  document_options documentOptions_, seenOptions_;  // those of this view, and as last stored
  bool lineNumbers_ = false;
  bool showSoftWrapInGutter_ = true, showBookmarksInGutter_ = true;
  bool overwriteMode_ = false, overwriteDefault_ = false;
  bool smartTyping_ = true, smartTypingDefault_ = true;
  bool autoIndent_ = true, indentedPaste_ = true;
  std::unique_ptr<indent_patterns> indentPatterns_;  // of the language that was at the caret last
  bool freehandedMode_ = false;
  bool antiAliasEnabled_ = true;
  bool showInvisibles_ = false;
  bool highlightCurrentLine_ = false;
  bool showWrapMarginIndicator_ = false, highlightWrapMargin_ = true;
  bool hardWrap_ = false;
  bool foldingsEnabled_ = true;
  std::string fontName_;
  double fontSize_ = 12;

  std::optional<platform::rect> flashed_;
  std::unique_ptr<platform::timer> flashTimer_;

  bool caretVisible_ = true;
  std::unique_ptr<platform::timer> blinkTimer_, centerTimer_;

  std::uint32_t lastModifierFlags_ = 0;
  bool hasSeenKey_ = false;
  bool didPressOption_ = false;
  double didPressOptionAt_ = 0;
  bool leftMouseDown_ = false;
  granularity dragGranularity_ = granularity::unit;
  text::selection dragAnchor_;  // what the click selected, for dragging by words or lines
  platform::point mouseDownAt_;
  platform::point mouseInVisible_;  // from the corner of what is visible: the text scrolls under it
  bool mouseHasMoved_ = false;
  std::unique_ptr<platform::timer> autoscrollTimer_, primaryTimer_;

  drag_arm dragArm_ = drag_arm::none;
  std::optional<platform::point> dropPoint_;  // from the corner of what is visible
  bool showsDropCaret_ = false;
  std::unique_ptr<platform::timer> dragArmTimer_, dropScrollTimer_, dropTimer_;

  std::vector<platform::menu_item> contextMenu_;

  platform::notification_center::token matchesToken_;
  std::unique_ptr<find_highlights> highlights_;
  bool hasFindNote_ = false;
  std::unique_ptr<WynISearchWindow> iSearchWindow_;

  std::u16string markedText_;
  std::size_t markedCaret_ = 0;
};
