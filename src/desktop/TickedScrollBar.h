#pragma once

#include <QScrollBar>

#include <functional>
#include <vector>

namespace widgets {

/// A vertical scroll bar with marks where there is something in what it scrolls.
class TickedScrollBar final : public QScrollBar {
 public:
  /// `ticks` gives the marked pixels of a bar so many pixels high.
  using tick_source = std::function<std::vector<std::size_t>(std::size_t height)>;
  TickedScrollBar(tick_source ticks, QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  tick_source ticks_;
};

}  // namespace widgets
