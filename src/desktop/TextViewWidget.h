#pragma once

#include "desktop/FontCells.h"
#include "desktop/KeyTranslation.h"
#include "platform/view.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QHelpEvent>
#include <QPointF>
#include <QScrollBar>
#include <QTimer>

#include <functional>
#include <memory>

namespace widgets {

class CompletionList;

/// What a text view needs of the window around it.
class TextViewOwner {
 public:
  /// Looked at before the view gets a key; true swallows it.
  virtual bool should_swallow(platform::key_event const& event) = 0;
  /// Performs the menu item that has this key; false if there is none.
  virtual bool perform_key_equivalent(platform::key_event const& event) = 0;
  /// Opens the menu whose title begins with this letter; false if there is none.
  virtual bool open_menu_with_letter(QString const& letter) = 0;
  virtual void open_first_menu() = 0;
  virtual void pop_up_menu(std::vector<platform::menu_item> const& items, QPoint global) = 0;
  /// By one step; does nothing at the largest and smallest size.
  virtual void change_text_size(bool larger) = 0;
  virtual std::uint32_t window_number() const = 0;

 protected:
  ~TextViewOwner() = default;
};

/// Shows a view_client: paints it, scrolls it, and hands on what the user does.
class TextViewWidget final : public QAbstractScrollArea,
                             public platform::view_host,
                             private platform::accessible_text_observer {
 public:
  /// Sets the client's host. The client must live until detach().
  TextViewWidget(platform::view_client& client, TextViewOwner& owner);

  /// Takes leave of client and owner, which may be gone before the widget is.
  void detach();

  /// Null while there is no text. Assistive programs hear of its changes from now on.
  platform::accessible_text* accessible_text();
  /// Input of the user, which the client gets when nothing waits.
  void deliver(std::function<void(platform::view_client&)> input);
  QRect on_screen(platform::rect const& r) const;
  platform::point from_screen(QPoint p) const { return to_view(viewport()->mapFromGlobal(p)); }

  // platform::view_host
  platform::rect visible_rect() const override;
  void scroll_to(platform::point origin) override;
  void glide_by(platform::point distance) override;
  void set_frame_size(platform::size s) override;
  void set_needs_display(platform::rect const& r) override;
  void set_ticks_need_display() override { verticalScrollBar()->update(); }
  std::uint32_t window_number() const override {
    return owner_ == nullptr ? 0 : owner_->window_number();
  }
  bool is_first_responder() const override { return hasFocus(); }
  bool is_window_key() const override { return isActiveWindow(); }
  platform::palette palette() const override;
  platform::font_metrics metrics_for(platform::font const& f) const override;
  void set_font(platform::font const& f) override;
  void hide_cursor_until_mouse_moves() override;
  void reset_cursor() override;
  void input_method_changed(bool abandon) override;
  void show_context_menu(std::vector<platform::menu_item> const& items,
                         platform::point where) override;
  std::optional<std::size_t> choose_from_menu(std::vector<platform::menu_item> const& items,
                                              std::optional<platform::point> where,
                                              double font_size) override;
  void begin_drag(plist::dictionary content, std::vector<platform::rect> const& shape,
                  platform::point at) override;
  platform::completion_list* completions() override;
  void show_tool_tip(platform::tool_tip const& tip) override;
  bool hide_tool_tip() override;
  void interpret_key_event(platform::key_event const& event) override;

  QSize sizeHint() const override;
  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

 protected:
  bool event(QEvent* event) override;
  bool viewportEvent(QEvent* event) override;
  void changeEvent(QEvent* event) override;
  bool focusNextPrevChild(bool) override { return false; }
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void text_inserted(std::size_t at, std::u16string const& text) override;
  void text_erased(std::size_t at, std::u16string const& text) override;
  void caret_moved() override;
  void end_access();
  void tell_modifiers(Qt::KeyboardModifiers modifiers);
  platform::point origin() const;
  platform::point to_view(QPointF local) const;
  QPoint to_viewport(platform::point p) const;
  void set_scroll_bars(QPointF origin);
  void glide();
  void update_scroll_bars();
  void follow_device_pixels();
  void focus_changed();
  void count_click(QMouseEvent const& event);
  platform::mouse_event translate_mouse(QMouseEvent const& event) const;
  QPixmap picture_of(std::vector<platform::rect> const& shape, QPointF& corner);
  platform::drag_info translate_drop(QDropEvent const& event,
                                     platform::pasteboard_content const& content) const;
  QPointF wheel_distance(QWheelEvent const& event) const;
  void zoom(int angle);
  void show_tool_tip(QHelpEvent const& event);
  QString tool_tip_text(platform::tool_tip const& tip) const;
  void show_cursor(platform::cursor cursor);

  platform::view_client* client_;
  TextViewOwner* owner_;
  platform::size frame_;
  std::shared_ptr<FontCells> cells_;
  CompletionList* completions_ = nullptr;  // made when first needed, a child of this
  KeyTranslation keys_;

  // The last press, to recognize double and triple clicks.
  QElapsedTimer since_press_;
  QPointF press_at_;
  Qt::MouseButton press_button_ = Qt::NoButton;
  int click_count_ = 0;
  QPointF wheel_rest_;  // fractions of a pixel not scrolled yet
  QTimer glide_timer_;  // runs as long as the text glides
  QElapsedTimer since_glide_;
  QPointF glide_at_, glide_target_;
  bool is_gliding_step_ = false;
  int zoom_rest_ = 0;  // parts of a wheel's step not zoomed yet
  bool cursor_hidden_ = false;
  bool had_selection_ = false;   // when assistive programs heard of the caret
  bool shows_tool_tip_ = false;  // or has shown one that went by itself
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

/// The colours of the desktop's theme for text.
platform::palette platform_palette(QPalette const& palette);

}  // namespace widgets
