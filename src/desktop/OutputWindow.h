#pragma once

#include "desktop/KeyTranslation.h"
#include "desktop/MenuBar.h"
#include "desktop/OutputPage.h"
#include "platform/html_window.h"

#include <QMainWindow>

#include <memory>

class QLabel;
class QToolButton;

namespace widgets {

class QtDesktop;
class OutputWindow;

/// The widget of a window with output: menus, a line for messages, the page, and whether the
/// command is still running. It outlives its OutputWindow until Qt's next turn.
class OutputFrame final : public QMainWindow, public MenuTarget {
 public:
  OutputFrame(QtDesktop& desktop, OutputWindow& window);
  ~OutputFrame() override;

  void detach();
  OutputPage& page() { return *page_; }
  void set_busy(bool busy);
  void set_message(QString const& message);

  // MenuTarget
  platform::responder* menu_responder() override;
  std::vector<platform::menu_item> dynamic_items(std::string_view name) override;
  void perform(std::string_view selector, plist::value const& argument) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void deliver(std::function<void()> input);

  QtDesktop& desktop_;
  OutputWindow* window_;
  KeyTranslation keys_;
  QLabel* message_;
  QLabel* state_;
  QToolButton* stop_;
  std::unique_ptr<OutputPage> page_;
};

/// A window with a page.
class OutputWindow final : public platform::html_window {
 public:
  OutputWindow(QtDesktop& desktop, platform::html_window_delegate& delegate);
  ~OutputWindow() override;

  void set_title(std::string const& title) override;
  void set_represented_filename(std::string const&) override {}
  void set_document_edited(bool) override {}
  void make_key_and_order_front() override;
  void close() override;
  bool is_visible() const override { return frame_->isVisible(); }
  bool is_miniaturized() const override { return frame_->isMinimized(); }
  void deminiaturize() override;
  bool is_key() const override { return frame_->isActiveWindow(); }
  platform::responder* first_responder() const override { return &delegate_; }
  platform::html_window_delegate* delegate() const override { return &delegate_; }
  void update_value(std::string_view, plist::value const&) override {}

  void load(std::string const& url, std::shared_ptr<platform::page_stream> content) override {
    frame_->page().load(url, std::move(content));
  }
  void stop_loading() override { frame_->page().stop_loading(); }
  platform::page_frame frame() const override { return frame_->page().frame(); }
  void scroll_to(platform::point upper_left) override { frame_->page().scroll_to(upper_left); }
  std::string placement() const override;
  void set_placement(std::string const& placement) override;
  void set_busy(bool busy) override { frame_->set_busy(busy); }
  void set_message(std::string const& message) override;
  bool perform(std::string_view selector) override { return frame_->page().perform(selector); }
  bool can_print() const override { return frame_->page().can_print(); }
  void print() override { frame_->page().print(); }

 private:
  QtDesktop& desktop_;
  platform::html_window_delegate& delegate_;
  OutputFrame* frame_;  // destroys itself a turn after this object
  bool closed_ = false;
};

}  // namespace widgets
