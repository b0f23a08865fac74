#pragma once

#include "platform/tab_bar.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace widgets {

/// The tabs of a window, drawn as one widget: 200 of them cost what is seen of them. They are moved
/// with the mouse, dragged into other windows or out of all, closed by their button or the middle
/// button, and scrolled by the wheel where there are many; then a button lists all of them.
class TabBar final : public QWidget, public platform::tab_bar {
 public:
  using menu_opener =
      std::function<void(std::vector<platform::menu_item> const& items, QPoint global)>;

  TabBar(platform::tab_bar_delegate& delegate, menu_opener open_menu, QWidget* parent);

  /// Nothing of the logic is called from here on.
  void detach() { delegate_ = nullptr; }

  // platform::tab_bar
  void set_tabs(std::vector<platform::shown_tab> tabs, platform::tab_id selected) override;
  void update_tab(platform::shown_tab const& tab) override;
  void select_tab(platform::tab_id tab) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {0, sizeHint().height()}; }

 protected:
  bool event(QEvent* event) override;
  /// Of the text: the user has settled on a tab when Ctrl is released.
  bool eventFilter(QObject* text, QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override { mousePressEvent(event); }
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  enum class part { none, tab, close_button, scroll_left, scroll_right, list };
  /// What is under the mouse.
  struct spot {
    part what = part::none;
    std::size_t index = 0;  ///< of a tab
    friend bool operator==(spot const&, spot const&) = default;
  };

  /// Input of the user, which the delegate gets when nothing waits.
  void deliver(std::function<void(platform::tab_bar_delegate&)> input);
  void lay_out();
  void scroll_by(int distance);
  void reveal(std::size_t index);
  std::optional<std::size_t> index_of(platform::tab_id tab) const;
  QRect tab_rect(std::size_t index) const;
  QRect close_rect(std::size_t index) const;
  QRect button_rect(part button) const;
  spot spot_at(QPoint at) const;
  std::size_t gap_at(int x) const;
  int room() const;
  void hover(spot at);
  void move_dragged(int x);
  void drag_out(QPoint at);
  void show_list();
  void draw_tab(QPainter& painter, std::size_t index) const;
  void draw_button(QPainter& painter, part button) const;

  platform::tab_bar_delegate* delegate_;
  menu_opener const open_menu_;
  std::vector<platform::shown_tab> tabs_;
  platform::tab_id selected_ = 0;
  std::vector<int> ends_;  // where each tab ends, in pixels from the first one's left edge
  bool is_laid_out_ = false, shall_reveal_ = false;
  int offset_ = 0;  // scrolled by, in pixels
  int wheel_rest_ = 0;
  spot hovered_, pressed_;
  QPoint press_at_;
  std::optional<std::size_t> dragged_;   // while it is moved within the bar
  std::optional<std::size_t> drop_gap_;  // where a tab from elsewhere would come
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

}  // namespace widgets
