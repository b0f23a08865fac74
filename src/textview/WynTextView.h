#pragma once

#include "actions/action_map.h"
#include "bundles/key_binding_target.h"
#include "platform/notification_center.h"
#include "platform/responder.h"
#include "platform/run_loop.h"
#include "platform/view.h"
#include "text/view.h"
#include "textview/TextLayout.h"

#include <functional>
#include <memory>
#include <string>

class WynDocument;

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
  unsigned tabSize() const { return tabSize_; }  // columns, at least 1
  void setTabSize(unsigned columns);
  bool softTabs() const { return softTabs_; }
  void setSoftTabs(bool on);
  bool treatsSpacesAsTabs() const { return softTabs_; }
  bool lineNumbers() const { return lineNumbers_; }
  void setLineNumbers(bool on);
  /// Whether lines are cut into rows that fit into what is visible; then nothing scrolls sideways.
  /// Other views that are open keep their own.
  bool softWrap() const { return softWrap_; }
  void setSoftWrap(bool on);
  bool showSoftWrapInGutter() const { return showSoftWrapInGutter_; }
  void setShowSoftWrapInGutter(bool on);
  bool showBookmarksInGutter() const { return showBookmarksInGutter_; }
  void setShowBookmarksInGutter(bool on);
  bool overwriteMode() const { return overwriteMode_; }
  void setOverwriteMode(bool on);
  bool freehandedEdit() const { return freehandedMode_; }
  void setFreehandedEdit(bool on);
  bool antiAliasEnabled() const { return antiAliasEnabled_; }
  void setAntiAliasEnabled(bool on);
  bool showInvisibles() const { return showInvisibles_; }
  void setShowInvisibles(bool on);
  bool highlightCurrentLine() const { return highlightCurrentLine_; }
  void setHighlightCurrentLine(bool on);
  /// In points.
  double fontSize() const { return fontSize_; }
  void setFontSize(double points);
  bool canMakeFontBigger() const;
  bool canMakeFontSmaller() const;

  /// Lines and columns from 1; a column counts units. False when there is no such line or no
  /// document; a column behind the line's end stands for that end.
  bool goToLineAndColumn(std::size_t line, std::size_t column);
  /// Extends the selection from its first mark; `columns` makes it a rectangle.
  bool selectToLineAndColumn(std::size_t line, std::size_t column, bool columns);

  /// Runs something that may exchange the whole text, such as reading the file again, and gives
  /// its result. The caret stays on its line where there still is one.
  bool replacingText(std::function<bool()> const& replace);

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

  /// The row and column ranges of the visible part without the gutter.
  platform::rect visibleTextRect() const;
  /// Scrolls as little as possible to show `r`, which is left of neither gutter nor margin.
  void scrollRectToVisible(platform::rect const& r);
  void centerSelectionInVisibleArea();
  /// Now and once more at the loop's next turn, when a frame that has just grown is laid out.
  void centerSelectionNowAndLater();
  bool caretIsVisible() const { return caretVisible_; }

 protected:
  plist::value query(std::string_view name, plist::value const& argument) override;

 private:
  friend class view_will_change;

  enum class granularity { unit, word, line };

  void addEditingMethods();
  void addExtensionMethods();
  void addScrollingMethods();
  void addBookmarkMethods();
  /// Enters an action that runs inside a view_will_change scope.
  void addAction(std::string selector, std::function<void()> action);
  void addToggle(std::string const& name, bool (WynTextView::*get)() const,
                 void (WynTextView::*set)(bool));

  plist::value undoOrRedo(bool undo);
  void userDefaultsDidChange();
  void applyOptionsToView();
  void attachView();
  void detachView();
  void publishAll();

  // Layout and scrolling (WynTextView_scrolling.cc)
  void setupTextFrame();
  void recalcFrameSize();
  void updateGutterWidth();
  unsigned fittingColumns() const;
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

  // Mouse (WynTextView_events.cc)
  void selectAtClick(platform::mouse_event const& event);
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

  std::shared_ptr<WynDocument> document_;
  text::view* view_ = nullptr;
  platform::view_host* host_ = nullptr;
  value_observer observer_;
  action_map actions_;
  title_action_map titles_;
  TextLayout layout_;
  int viewChangeNesting_ = 0;
  platform::notification_center::token defaultsToken_, documentToken_;

  unsigned tabSize_ = 4;
  bool softTabs_ = false;
  bool lineNumbers_ = false;
  bool softWrap_ = false;
  bool showSoftWrapInGutter_ = true, showBookmarksInGutter_ = true;
  bool overwriteMode_ = false, overwriteDefault_ = false;
  bool freehandedMode_ = false;
  bool antiAliasEnabled_ = true;
  bool showInvisibles_ = false;
  bool highlightCurrentLine_ = false;
  std::string fontName_;
  double fontSize_ = 12;

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

  std::vector<platform::menu_item> contextMenu_;

  std::u16string markedText_;
  std::size_t markedCaret_ = 0;
};
