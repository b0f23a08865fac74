#pragma once

#include "desktop/OutputPage.h"
#include "platform/html/html_text.h"

#include <QPlainTextEdit>
#include <QTimer>

namespace widgets {

/// Shows output without what HTML makes of it, where there is nothing to show pages with.
class TextOutputPage final : public OutputPage {
 public:
  /// `reason` says why there are no pages.
  TextOutputPage(platform::html_window_delegate& delegate, std::string const& reason);
  ~TextOutputPage() override;

  QWidget* widget() override { return &column_; }
  void load(std::string const& url, std::shared_ptr<platform::page_stream> content) override;
  void stop_loading() override;
  platform::page_frame frame() const override;
  void scroll_to(platform::point upper_left) override;
  bool can_print() const override { return false; }
  void print() override {}

 protected:
  void copy() override { text_->copy(); }
  void select_all() override { text_->selectAll(); }
  void set_text_size(text_size size) override;

 private:
  class Text final : public QPlainTextEdit {
   public:
    explicit Text(TextOutputPage& owner);

   protected:
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

   private:
    TextOutputPage& owner_;
  };

  void read();
  void show(std::vector<platform::html_text::span> const& spans);
  void follow(std::string const& link);

  QWidget column_;
  Text* text_;
  QTimer timer_;
  std::shared_ptr<platform::page_stream> stream_;
  std::unique_ptr<platform::html_text> reader_;
  int line_length_ = 0;  // units, of the last line
};

}  // namespace widgets
