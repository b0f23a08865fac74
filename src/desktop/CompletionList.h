#pragma once

#include "desktop/FontCells.h"
#include "platform/completion_list.h"

#include <QWidget>

#include <functional>
#include <memory>

namespace widgets {

/// The pop-up list of completions: a window without a frame that takes no focus. Owned by the
/// widget of the text.
class CompletionList final : public QWidget, public platform::completion_list {
 public:
  /// Where a place of the view is on the screen.
  using placing = std::function<QRect(platform::rect const&)>;

  CompletionList(QWidget& text, placing place);

  /// The font from now on.
  void set_cells(std::shared_ptr<FontCells> cells);

  // platform::completion_list
  void show_rows(std::vector<platform::completion_row> rows, std::size_t selected,
                 platform::rect const& word) override;
  void select_row(std::size_t row) override;
  void hide_rows() override;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  int row_height() const;
  std::size_t shown_rows() const;
  void fit(QRect const& word);
  void scroll_to_selected();
  void announce_selected();
  void scroll_by(int rows);

  placing place_;
  std::shared_ptr<FontCells> cells_;
  std::vector<platform::completion_row> rows_;
  std::size_t selected_ = 0, first_ = 0;
  int wheel_rest_ = 0;
};

}  // namespace widgets
