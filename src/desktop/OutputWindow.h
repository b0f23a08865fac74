#pragma once

#include "desktop/FramedWindow.h"
#include "desktop/KeyTranslation.h"
#include "desktop/OutputPage.h"

#include <memory>

class QLabel;
class QToolButton;

namespace widgets {

/// The widget of a window with output: menus, a line for messages, the page, and whether the
/// command is still running.
class OutputFrame final : public WindowFrame {
 public:
  OutputFrame(WindowOwner& owner, platform::window& window,
              platform::html_window_delegate& delegate);
  ~OutputFrame() override;

  void detach() override;
  void take_initial_size() override;
  OutputPage& page() { return *page_; }
  void set_busy(bool busy);
  void set_message(QString const& message);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  KeyTranslation keys_;
  QLabel* message_;
  QLabel* state_;
  QToolButton* stop_;
  std::unique_ptr<OutputPage> page_;
};

/// A window with a page.
class OutputWindow final : public FramedWindow<platform::html_window, OutputFrame> {
 public:
  OutputWindow(WindowOwner& owner, platform::html_window_delegate& delegate)
      : FramedWindow(owner, delegate, delegate, delegate) {}

  void set_title(std::string const& title) override;
  void set_represented_filename(std::string const&) override {}
  void set_document_edited(bool) override {}
  void close() override;
  void update_value(std::string_view, plist::value const&) override {}
  void set_offers(std::vector<platform::menu_item> const&) override {}

  void load(std::string const& url, std::shared_ptr<platform::page_stream> content) override {
    page().load(url, std::move(content));
  }
  void stop_loading() override { page().stop_loading(); }
  platform::page_frame frame() const override { return page().frame(); }
  void scroll_to(platform::point upper_left) override { page().scroll_to(upper_left); }
  void set_busy(bool busy) override { widget().set_busy(busy); }
  void set_message(std::string const& message) override;
  bool perform(std::string_view selector) override { return page().perform(selector); }
  bool can_print() const override { return page().can_print(); }
  void print() override { page().print(); }

 private:
  OutputPage& page() const { return widget().page(); }
};

}  // namespace widgets
