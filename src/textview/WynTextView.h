#pragma once

#include "actions/action_map.h"
#include "actions/comments.h"
#include "bundles/item_view.h"
#include "conventions/declared.h"
#include "grammar/scope_path.h"
#include "keys/key_binding_target.h"
#include "layout/drawn_text.h"
#include "layout/laid_out_view.h"
#include "platform/notification_center.h"
#include "platform/responder.h"
#include "platform/run_loop.h"
#include "platform/view.h"
#include "search/searched_view.h"
#include "styles/document_options.h"
#include "styles/styled_view.h"
#include "styles/symbol.h"
#include "styles/typing_pairs.h"
#include "text/line_place.h"
#include "text/views/view.h"
#include "textview/brief_flash.h"
#include "textview/isearch/isearch_view.h"
#include "textview/mouse/pointed_view.h"
#include "textview/view_switches.h"
#include "typing/typed_view.h"
#include "typing/typing_run.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class WynDocument;
class WynISearchWindow;
namespace commands {
class command_owner;
}
namespace layout {
class bracket_marks;
class word_marks;
}  // namespace layout
namespace search {
class find_highlights;
class find_scope;
struct find_answer;
}  // namespace search
namespace snippet {
class session;
class snippet_t;
}  // namespace snippet
namespace styles {
class symbol_list;
class view_styles;
}  // namespace styles
namespace textview {
class drop_target;
class mouse_tracker;
class text_access;
class view_will_change;
}  // namespace textview
namespace typing {
class line_indenter;
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
                    public keys::key_binding_target,
                    public textview::view_switches,
                    public textview::pointed_view,
                    public textview::isearch_view,
                    public search::searched_view,
                    public typing::typed_view,
                    public bundles::item_view {
 public:
  WynTextView();
  ~WynTextView() override;
  WynTextView(WynTextView const&) = delete;
  WynTextView& operator=(WynTextView const&) = delete;

  /// Shows another document, or none. The one shown before gets its view back.
  void setDocument(std::shared_ptr<WynDocument> document);
  std::shared_ptr<WynDocument> const& document() const { return document_; }
  /// Stores in the view what is in sight, so that it comes back there when it is shown again.
  void snapshotMetaData();
  /// Null as long as there is no document. Owned by the document.
  text::view* view() const final { return view_; }
  TextLayout const& layout() const final { return layout_; }
  platform::view_host* host() const final { return host_; }
  bool isSeen() const final { return host_ == nullptr || host_->is_seen(); }

  /// The menu for a click with the right button.
  void setContextMenu(std::function<std::vector<platform::menu_item>()> make) {
    contextMenu_ = std::move(make);
  }

  /// Gets the values that the status bar shows, under the names given in platform/window.h.
  using value_observer = std::function<void(std::string_view key, plist::value const& value)>;
  void bind(value_observer observer);
  void updateValueForKey(plist::value const& value, std::string_view key) final;

  // Dispatch by name
  bool respondsToSelector(std::string_view selector) const override;
  std::vector<std::string> selectors() const override;
  plist::value performSelectorWithObject(std::string_view selector,
                                         plist::value const& object) override;
  bool tryToPerformWith(std::string_view selector, plist::value const& object) override;
  void doCommandBySelector(std::string_view selector);
  void interpretKeyEvents(platform::key_event const& event) override;
  void showPendingKeys(std::string const& keys) override;
  /// Of a binding over several keys the first ones count no more.
  void forgetPendingKeys();

  // Editing (WynTextView_editing.cc)
  void insertText(std::u16string_view text);
  void insertText(plist::value const& text) override;
  void deleteBackward();
  void deleteForward();
  void deleteToEndOfParagraph();
  void insertNewline();
  /// What the Tab key does: the next field of a snippet, what the letters before the caret stand
  /// for, the selected lines one level further right, or else a tab.
  void insertTab();
  void insertBacktab();

  // Options (WynTextView_Extension.cc), with those of view_switches. Setters do nothing when the
  // value stands.
  /// Whether brackets and quotes are typed in pairs. Its action is for this view alone.
  bool smartTyping() const final { return smartTyping_; }
  bool overwriteMode() const final { return overwriteMode_; }
  void setOverwriteMode(bool on);
  bool autoIndent() const final { return textview::view_switches::autoIndent(); }
  bool indentedPaste() const final { return textview::view_switches::indentedPaste(); }
  /// In points.
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  bool canMakeFontBigger() const;
  bool canMakeFontSmaller() const;
  /// Lets the user choose family and size.
  void chooseFont();

  // Options of one document (WynTextView_ScopedSettings.cc). A setter changes what views opened
  // later begin with; those that are open keep their own.
  unsigned tabSize() const final { return documentOptions_.tabSize; }
  void setTabSize(unsigned columns);
  bool softTabs() const { return documentOptions_.softTabs; }
  void setSoftTabs(bool on);
  bool treatsSpacesAsTabs() const final { return documentOptions_.softTabs; }
  /// Whether lines are cut into rows of wrapColumns().
  bool softWrap() const { return documentOptions_.softWrap; }
  void setSoftWrap(bool on);
  /// The column at which lines are wrapped and the margin is drawn; below 1 there is none, and they
  /// are wrapped at the edge of what is visible.
  int rightMargin() const { return documentOptions_.rightMargin; }
  void setRightMargin(int column);
  /// The column after which a line is drawn, whether lines are wrapped or not; 0 for none.
  int rulerColumn() const { return rulerColumn_; }
  /// The width of a wrapped row: the right margin, or as many columns as are visible. There must be
  /// a document.
  unsigned wrapColumns() const;

  plist::value scopedValueForKeyInDomain(std::string_view key, std::string_view domain) const;
  void setScopedValueForKeyInDomain(plist::value value, std::string_view key,
                                    std::string_view domain);

  /// False without a document or for line 0; a line or a column after the last one stands for that.
  bool goToLineAndColumn(text::line_place const& place);
  /// Extends the selection from its first mark; `columns` makes it a rectangle.
  bool selectToLineAndColumn(text::line_place const& place, bool columns);

  /// Runs something that may exchange the whole text, such as reading the file again, and gives
  /// its result. The caret stays on its line where there still is one.
  bool replacingText(std::function<bool()> const& replace);

  // Saving (WynTextView_Saving.cc)
  /// Takes blanks off the ends of lines and puts a line end after the last one, as the project, a
  /// modeline or the user's settings say; one step for undo.
  void tidyBeforeSaving(conventions::declared const& project);

  // Language, scopes and styles (WynTextView_StyleSheet.cc). Languages are named by uuid, "" for
  // none.
  /// Posted with this as the object and QNDocumentURL, of a document with a file,
  /// QNDocumentLanguageName, QNDocumentLanguageScope and, of a view in a window, its number as
  /// QNDocumentWindow in the info.
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
  grammar::tokenize_filter* tokenizer() const final { return tokenizer_; }
  bit_stack::storage graphPathForIterator(text::iterator const& it) const final;
  /// Of the caret, or what is common to all of the selection; if `wait`, when the worker has got
  /// there or after the tokenizer's patience.
  bit_stack::storage graphPathForCaretWait(bool wait) const;
  /// The names of the scopes, outermost first.
  std::vector<std::string> scopeForContext(bit_stack::storage const& path) const final;
  std::vector<std::string> currentContext() const {
    return scopeForContext(graphPathForCaretWait(true));
  }
  /// The merged settings of theme and bundles for a path; nothing without a document. A look-up
  /// after the first time.
  plist::value stylesForContext(bit_stack::storage const& path) const final;
  plist::value stylesForCaretWait(bool wait) const final {
    return stylesForContext(graphPathForCaretWait(wait));
  }
  plist::value stylesForCaret() const { return stylesForCaretWait(true); }
  plist::value stylesForTypingAt(text::iterator const& at) const final;
  /// The rules of a theme, as it is set until another one is selected; nothing for the colours of
  /// the desktop.
  void setCurrentStyleSheet(plist::value rules);
  /// What applies to these scopes, before it is merged.
  styles::style_candidates styleCandidates(std::vector<std::string> const& scopes) const final;
  styles::drawn_style const& styleOfPath(grammar::path_tree::id id) const final;
  /// The merged settings for a path of the tokenizer, which must be there.
  plist::value stylesOfPath(grammar::path_tree::id id) const final;
  /// Whether text with a path of the tokenizer, which must be there, is in the list of symbols.
  bool isSymbol(grammar::path_tree::id id) const final;
  /// Whether that has been asked before, and costs no more than a look-up.
  bool knowsSymbol(grammar::path_tree::id id) const final;

  /// Tells the user about scopes and style at the caret.
  void showScope();

  // Symbols (WynTextView_StyleSheet.cc)
  static constexpr char const* function_pop_up_did_change = "WynFunctionPopUpDidChange";
  /// In the order of the text. Made again when an action has changed a text that isn't large, and
  /// half a second after what changes its tokens.
  std::vector<styles::symbol> const& functionPopUp() const;
  /// The same, which stay as they are when the list is made again.
  std::shared_ptr<std::vector<styles::symbol> const> sharedFunctionPopUp() const;
  /// Makes it now, of the tokens known so far. There must be a document.
  void buildFunctionPopUp();
  /// The name of the last one that begins above the caret or on its line; there must be a document.
  std::string symbolAtCaret() const;
  void symbolsDidChange() final;
  void currentSymbolDidChange(std::string const& name) final;

  // Find and replace (WynTextView_Find.cc)
  plist::value findWithOptions(plist::dictionary options) final;
  bool setFindScope(bool in_selection) final;
  std::optional<std::pair<text::pos, text::pos>> findScope() const final;
  void showMatch(text::pos first, text::pos last) final;
  void ticksDidChange() final;
  std::vector<std::size_t> scroll_ticks(std::size_t height) const override;
  /// The number of replacements; 0 with a message for the user if something is wrong.
  std::size_t internalReplaceAllError(plist::value const& options, std::string& error);
  /// The matches of the find bar's text in sight; of a view that shows a document.
  std::vector<std::pair<text::iterator, text::iterator>> const& shownMatches() const;

  // Incremental search (WynTextView_ISearch.cc)
  /// Null while there is none.
  WynISearchWindow* incrementalSearchWindow() const { return iSearchWindow_.get(); }
  void openIncrementalSearchWindow(bool backward);
  void closeIncrementalSearchWindow() final;
  bool findNextIncrementalSearchString(bool further) final;
  bool findPreviousIncrementalSearchString(bool further) final;

  // Completion (WynTextView_Completion.cc)
  /// Completes the word before the caret, or replaces the completion just made by the next
  /// candidate, or by the previous one; false if there is none.
  bool complete(bool forward);
  /// Replaces the word before the caret, or before the selection and the selection, by the text.
  bool acceptCompletion(std::string const& text);
  /// What the list offers at the caret for a word that begins like this.
  plist::value matchesForString(std::string const& typed);

  // Brackets (WynTextView_pairs.cc)
  /// Selects the innermost pair of brackets round the selection and what is between; false if there
  /// is none.
  bool selectBlock();
  /// Types the closing tag of the innermost one that is open at the caret; false if there is none.
  bool insertClosingTag();
  /// What the language at the caret says under a key such as "highlightPairs", or else the pairs of
  /// all texts.
  std::vector<styles::unit_pair> pairsAtCaret(char const* key) const;
  bool mayOpenPair(text::char_t typed) const final;
  bool mayIndentLines() const final;
  /// What is marked besides: the brackets at the caret, and the places of a selected word.
  layout::bracket_marks const& bracketMarks() const { return *brackets_; }
  layout::word_marks const& wordMarks() const { return *words_; }
  /// An opening unit that is shown for a moment, since its partner has just been typed.
  std::optional<platform::rect> const& flashed() const { return flash_.area(); }

  // Bundle items and snippets (WynTextView_Snippets.cc)
  std::string scopeAtCaret() const final;
  bool hasSelection() const final;
  platform::responder& itemResponder() final { return *this; }
  std::optional<std::size_t> chooseFromMenu(std::vector<platform::menu_item> const& items,
                                            bool at_mouse) final;
  /// The range of the field that is being filled in, if a snippet runs.
  std::vector<std::pair<text::iterator, text::iterator>> snippetFields() const;

  // The environment of commands (WynTextView_Environment.cc)
  plist::dictionary environmentVariables() const override;
  /// The word that the caret stands in or at; empty if there is none.
  std::u16string wordAtCaret() const;
  /// Where that is; there must be a document.
  std::pair<text::iterator, text::iterator> wordRangeAtCaret() const;
  /// Of the caret with the prefix "QN_", else named as what a command reads is.
  plist::dictionary variablesOfPlace(text::view_iterator const& at,
                                     std::string const& prefix) const;

  // Commands (WynTextView_Commands.cc)
  /// Not owned; null for none.
  void setCommandOwner(commands::command_owner* owner) { commandOwner_ = owner; }
  /// The whole text with its scopes as markup, or what is selected of it.
  std::u16string xmlRepresentation() const;
  std::u16string xmlRepresentationForSelection() const;
  /// Widens the selection as far as the selector applies to what stands next to it.
  void extendSelectionInScope(std::string const& selector);
  /// Runs the drag command for such a file, of several the one that the user chooses, with the
  /// modifier keys that are held. False if there is none.
  bool dropFile(std::string const& path, std::uint32_t modifiers) final;
  /// Under the caret or, where that is out of sight, at the mouse pointer.
  void showToolTip(std::u16string_view text);

  // Macros (WynTextView_Macros.cc)
  bool isRecordingMacro() const override { return macroRecordingBuffer_.has_value(); }
  /// Notes a step of the macro that is being recorded, if there is one.
  void recordMacroCommand(std::string_view command, plist::value const& argument);
  bool isPlayingMacro() const { return macroDepth_ > 0; }
  /// The user has cancelled something that a step does: no more steps, of the macros around it
  /// neither.
  void stopMacro();
  /// The user has cancelled what comes before a command, which doesn't run.
  void commandWasRefused();

  // Drag and drop (WynTextView_dragging.cc)
  void performNamed(char const* selector) final { performSelectorWithObject(selector, {}); }
  void change(std::function<void()> const& edit) final;
  void startDragForEvent(platform::mouse_event const& event) final;
  /// See drop_target::operation_for.
  std::uint32_t dragOperationForInfo(platform::drag_info const& info) const;
  /// Where something would be dropped; nothing while nothing is dragged over the view.
  std::optional<platform::rect> dropCaret() const;

  // platform::view_client
  void set_host(platform::view_host* host) override;
  void draw(platform::graphics& g, platform::rect const& dirty) override;
  void wait_for_visible() override;
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
  void replace_surrounding_text(std::ptrdiff_t offset, std::size_t length,
                                std::u16string_view text) override;
  platform::rect caret_rect() const override;
  std::u16string selected_text() const override;
  platform::caret_context text_around_caret() const override;
  platform::accessible_text* begin_access(platform::accessible_text_observer& observer) override;
  void end_access() override;
  bool scrolls_smoothly() const override { return smoothScrolling(); }
  void visible_rect_changed() override;
  void font_metrics_changed() override { frameDidChange(); }
  void focus_changed() override;

  std::u16string const& markedText() const final { return markedText_; }
  double markedTextOffset() const final;

  /// Where the mark of folded text stands after a row; empty without one.
  platform::rect foldEllipsis(std::size_t row) const;

  platform::rect visibleTextRect() const final;
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
  friend class textview::view_will_change;
  class change_observer;

  void addEditingMethods();
  void addExtensionMethods();
  void addScrollingMethods();
  void addBookmarkMethods();
  void addFoldingMethods();
  void addFindMethods();
  void addISearchMethods();
  void addStyleSheetMethods();
  void addPairMethods();
  void addSnippetMethods();
  void addMacroMethods();
  void addCommandMethods();
  void addClipboardMethods();
  void addCompletionMethods();
  /// Enters an action that runs inside a view_will_change scope.
  void addAction(std::string selector, std::function<void()> action);
  plist::value performAction(actions::action_map::action const& action);
  void attachView();
  void detachView();
  void openFolded();
  void publishAll();
  void publishPosition();
  void showChangesFromOutside();

  // Options (WynTextView_Extension.cc)
  void addToggle(std::string const& selector, std::function<bool()> get,
                 std::function<void()> flip);
  void userDefaultsDidChange(plist::value const& note);
  void applyOptionsToView();
  void frameDidChange();
  void fontDidChange();
  void switchDidChange() override;
  void applyFreehandedMode();

  // Options of one document (WynTextView_ScopedSettings.cc)
  void addScopedSettingMethods();
  std::string_view rootScope() const { return rootScope_; }
  void initializeSettings();
  void readConventions();
  void publishIndentation();
  void documentDefaultsDidChange(plist::value const& note);
  void wrappingDidChange();
  bool askForRightMargin();

  // Saving (WynTextView_Saving.cc)
  void noteEndsOfLines();
  void trimTrailingBlanks();

  // Editing (WynTextView_editing.cc)
  std::vector<actions::comment_marker> commentMarkers() const;
  void insertTyped(std::u16string_view text, bool closes);
  void breakTypedLine();
  void insertPlainTab();
  plist::value deleteTyped(typing::key_kind kind);
  void abandonMarkedText();
  void insertElsewhere(text::pos at, std::u16string_view text);

  // Undo (WynTextView_Undo.cc)
  void addUndoMethods();
  plist::value undoOrRedo(bool undo, bool run);

  // Find and replace (WynTextView_Find.cc)
  /// After a replacement that redo is to bring back together with the match.
  search::find_answer findMatch(bool backward, bool is_part_of_change = false);
  search::find_answer replaceSelection();
  bool replaceAndFind();
  bool findAgain(bool backward);
  void showFindNote(std::string const& note);
  /// Of a bundle item, say: once on standard error, and each time in the status bar.
  void tellOfFault(std::string const& fault);
  plist::value replaceAllIn(char const* scope);
  std::string performFind(std::string const& action, plist::value const& options, bool& found);

  // Incremental search (WynTextView_ISearch.cc)
  bool selectMatch(std::u16string const& string, bool backward, bool further);
  bool selectIncrementalMatch(bool backward, bool further);

  // Language and styles (WynTextView_StyleSheet.cc)
  void attachTokenizer();
  void startTokenizer();
  void detachTokenizer();
  void setRules(unsigned language);  // an index of language_catalogue
  void postLanguageDidChange();
  void publishLanguage();
  void filenameDidChange(plist::value const& info);
  void languagesDidChange();
  void preferencesDidChange();
  void resetDisplay();

  // Macros (WynTextView_Macros.cc)
  /// What an action does itself is no further step of a macro.
  class recording_suspended {
   public:
    explicit recording_suspended(WynTextView& view)
        : view_(view), former_(std::exchange(view.isRecordingSuspended_, true)) {}
    ~recording_suspended() { view_.isRecordingSuspended_ = former_; }
    recording_suspended(recording_suspended const&) = delete;
    recording_suspended& operator=(recording_suspended const&) = delete;

   private:
    WynTextView& view_;
    bool const former_;
  };
  bool isStepOfMacro(std::string_view selector) const;
  void toggleMacroRecording();
  void abortMacroRecording();
  class macro_run;
  bool playMacro(plist::value const& macro);
  bool playSteps(plist::value const& macro);
  static bool saveScratchMacro();
  plist::value performNamed(std::string_view selector, plist::value const& object, bool& known);
  void recordFind(char const* action, char const* scope = nullptr);

  // Snippets (WynTextView_Snippets.cc)
  snippet::session* runningSnippet() const;
  bool expandCodeSnippet();
  void deleteTabTrigger(std::string const& trigger);
  bool insertSnippet(plist::value const& options);
  void insertParsedSnippet(snippet::snippet_t inserted);
  void selectSnippetField(text::iterator_observer::subset const& field);
  bool goToSnippetField(bool forward);
  void leaveCodeSnippetEditing();
  void publishSnippetField();

  // Commands (WynTextView_Commands.cc)
  bool selectCurrentScope();
  bool selectCommandResult(plist::value const& place);
  void selectRange(text::pos first, text::pos last);
  std::optional<text::text_block> outputOfSelection();
  bool executeSelection(bool at_end, bool replace);

  // Layout and scrolling (WynTextView_scrolling.cc)
  void setupTextFrame();
  void recalcFrameSize();
  void updateGutterWidth();
  double bookmarkZone() const;
  unsigned fittingColumns() const;
  double frameWidth() const;
  bool updateScreenWidth();
  void applySoftWrap();
  void setNeedsDisplay();
  void setNeedsDisplayOfLines(std::size_t first, std::size_t last);
  void setNeedsDisplayOfCurrentLines(platform::rect const& old_caret, bool had_selection);
  void scrollByRows(double rows, bool smoothly);
  void moveByPage(int direction, bool select);

  // Caret (WynTextView_scrolling.cc)
  void showCaret();
  void blinkCaret();

  // Bookmarks (WynTextView_Bookmarks.cc)
  void toggleBookmark(std::size_t line, std::size_t column);
  bool toggleBookmarkAtClick(platform::point p);
  void goToBookmark(text::pos (text::view::*find)(std::size_t line) const);

  // Folding (WynTextView_Folding.cc)
  bool isFolded(std::size_t row) const;
  std::optional<std::size_t> rowOfEllipsisAt(platform::point p) const;
  bool toggleFoldingAtClick(platform::mouse_event const& event);
  std::optional<platform::tool_tip> tipOfHiddenCharacters(platform::point p) const;

  // Mouse (WynTextView_events.cc)
  void showContextMenu(platform::point p);
  void showContextMenuAtCaret();
  void endGesture();
  void pastePrimarySelectionAt(platform::point p);
  bool pasteFromHistory();
  void selectionDidChange();
  void publishPrimarySelection();
  void publishSelectionCount();

  // Brackets (WynTextView_pairs.cc)
  bool dependsOnScope(text::char_t typed) const;
  void flashPartner();
  void followMarks();

  std::shared_ptr<WynDocument> document_;
  text::view* view_ = nullptr;
  platform::view_host* host_ = nullptr;
  value_observer observer_;
  actions::action_map actions_;
  actions::title_action_map titles_;
  TextLayout layout_;
  int viewChangeNesting_ = 0;
  std::unique_ptr<change_observer> changeObserver_;
  std::unique_ptr<platform::timer> outsideTimer_;
  platform::notification_center::token defaultsToken_, documentToken_, themeToken_;
  std::vector<platform::notification_center::token> bundleTokens_;

  std::string languageUUID_, currentMode_, rootScope_;
  grammar::tokenize_filter* tokenizer_ = nullptr;
  std::unique_ptr<styles::view_styles> styles_;
  std::unique_ptr<styles::symbol_list> symbols_;

  styles::document_options documentOptions_,
      seenOptions_;  // those of this view, and as last stored
  styles::indent_sources indentSources_;
  styles::indent_origin indentOrigin_;
  std::optional<bool> modelineFinalNewline_;
  /// Of the text as it was opened.
  bool hadTrailingBlanks_ = false, hadFinalNewline_ = false;
  bool overwriteMode_ = false, overwriteDefault_ = false;
  bool smartTyping_ = true, smartTypingDefault_ = true;
  int rulerColumn_ = 0;
  std::string fontName_;
  double fontSize_ = 12;

  std::unique_ptr<typing::line_indenter> indenter_;
  typing::typing_run typingRun_;
  std::unique_ptr<textview::mouse_tracker> mouse_;
  std::unique_ptr<textview::drop_target> drop_;
  std::unique_ptr<textview::text_access> access_;
  platform::accessible_text_observer* accessObserver_ = nullptr;  // while anyone listens
  textview::brief_flash flash_;
  std::unique_ptr<layout::bracket_marks> brackets_;
  std::unique_ptr<layout::word_marks> words_;
  bool hasSeenKey_ = false;
  bool caretVisible_ = true;
  bool showsSelectionCount_ = false;
  std::unique_ptr<platform::timer> blinkTimer_, centerTimer_, primaryTimer_;
  std::function<std::vector<platform::menu_item>()> contextMenu_;

  platform::notification_center::token matchesToken_;
  std::unique_ptr<search::find_highlights> highlights_;
  std::unique_ptr<search::find_scope> findScope_;
  bool hasFindNote_ = false;
  std::unique_ptr<WynISearchWindow> iSearchWindow_;

  commands::command_owner* commandOwner_ = nullptr;
  std::string shownSnippetField_, snippetName_;
  std::optional<plist::array> macroRecordingBuffer_;
  bool isRecordingSuspended_ = false;
  int macroDepth_ = 0;
  std::uint64_t refusals_ = 0;    ///< of commands
  macro_run* playing_ = nullptr;  // the outermost

  std::u16string markedText_;
  std::size_t markedCaret_ = 0;
  /// Marked text that ended without being inserted, and where it stood in which state of the text.
  struct abandoned_text {
    std::u16string text;
    text::pos at;
    std::uint32_t memento;
  };
  std::optional<abandoned_text> abandoned_;
};
