#pragma once

#include "desktop/KeyTranslation.h"
#include "desktop/TextViewWidget.h"
#include "platform/tree/tree_panel.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QLineEdit>

#include <functional>
#include <memory>
#include <optional>

namespace widgets {

class TitleEditor;

/// Shows a tree_client: paints its rows, scrolls them, and hands on what the user does. It knows
/// the rows in sight alone.
class TreeWidget final : public QAbstractScrollArea, public platform::tree_host {
 public:
  /// Sets the client's host. Client and owner must live until detach().
  TreeWidget(platform::tree_client& client, TextViewOwner& owner, QWidget* parent);

  void detach();
  bool has_client() const { return client_ != nullptr; }
  bool has_focus() const;

  // platform::tree_host
  void rows_changed() override;
  void show_row(std::size_t row) override;
  std::size_t page_size() const override;
  void edit_title(std::size_t row, std::string const& title, std::size_t selected) override;
  void end_editing() override;
  void client_goes() override;

  QSize sizeHint() const override { return {wanted_width, 0}; }
  int wanted_width = 200;  ///< in pixels, where there is room

 protected:
  bool viewportEvent(QEvent* event) override;
  bool focusNextPrevChild(bool) override { return false; }
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void timerEvent(QTimerEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override { dragMoveEvent(event); }
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void deliver(std::function<void(platform::tree_client&)> input);
  void take_rows();
  int row_height() const;
  int indent() const { return row_height() * 2 / 3; }
  std::optional<std::size_t> row_at(QPoint p);
  QRect rect_of(std::size_t row) const;
  int title_x(std::size_t depth) const;
  bool is_on_arrow(platform::tree_row const& row, QPoint p) const;
  void paint_row(QPainter& painter, QRect const& area, platform::tree_row const& row) const;
  void paint_drop(QPainter& painter) const;
  void place_editor();
  void begin_drag();
  platform::tree_drop drop_at(QDropEvent const& event, platform::pasteboard_content const& content);
  void mark_drop(std::optional<platform::drop_answer> answer);

  platform::tree_client* client_;
  TextViewOwner* owner_;
  KeyTranslation keys_;
  std::size_t count_ = 0;  // when the rows were last taken
  QBasicTimer rows_timer_;
  TitleEditor* editor_ = nullptr;
  std::size_t edited_row_ = 0;
  std::optional<std::size_t> pressed_;  // a row, with the left button
  QPoint pressed_at_;
  std::optional<platform::drop_answer> drop_;
  std::optional<std::size_t> hovered_;  // by a drag
  QBasicTimer hover_timer_, scroll_timer_;
  int scroll_step_ = 0;
  std::shared_ptr<char> const lives_ = std::make_shared<char>();
};

/// The field for a row's title.
class TitleEditor final : public QLineEdit {
 public:
  explicit TitleEditor(QWidget* parent) : QLineEdit(parent) {}
  /// Gives why the title can't be so; "" if it can.
  std::function<QString(QString const&)> fault;
  /// The title, or nothing if it is dropped. Called once.
  std::function<void(std::optional<QString>)> done;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void end(std::optional<QString> title);
};

}  // namespace widgets
