#pragma once

#include "desktop/MenuBar.h"
#include "desktop/StatusBar.h"
#include "desktop/TextViewWidget.h"
#include "platform/window.h"

#include <QMainWindow>

namespace widgets {

class QtDesktop;
class EditorWindow;

/// The widget of an editor window. It outlives its EditorWindow until Qt's next turn, since actions
/// that close the window come out of its own menus and keys.
class EditorFrame final : public QMainWindow, public MenuTarget, public TextViewOwner {
 public:
  EditorFrame(QtDesktop& desktop, EditorWindow& window, platform::view_client& client);

  /// The EditorWindow goes: nothing of the logic is called from here on.
  void detach();
  StatusBar& status() { return *status_; }
  /// Before the window is shown for the first time.
  void take_initial_size();

  // MenuTarget
  platform::responder* menu_responder() override;
  std::vector<platform::menu_item> dynamic_items(std::string_view name) override;
  void perform(std::string_view selector, plist::value const& argument) override;

  // TextViewOwner
  bool should_swallow(platform::key_event const& event) override;
  bool perform_key_equivalent(platform::key_event const& event) override;
  bool open_menu_with_letter(QString const& letter) override;
  void pop_up_menu(std::vector<platform::menu_item> const& items, QPoint global) override;
  void change_text_size(bool larger) override;
  std::uint32_t window_number() const override { return number_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  /// What the user wants done; it is, when nothing waits.
  void deliver(std::function<void()> input);
  void open_status_menu(std::string const& part, QPoint global);

  QtDesktop& desktop_;
  EditorWindow* window_;
  std::uint32_t const number_;
  MenuBar* menus_;
  TextViewWidget* text_;
  StatusBar* status_;
};

/// A window with one text view and a status bar.
class EditorWindow final : public platform::window {
 public:
  EditorWindow(QtDesktop& desktop, platform::window_delegate& delegate,
               platform::view_client& client, platform::responder& first);
  ~EditorWindow() override;

  void set_title(std::string const& title) override;
  void set_represented_filename(std::string const& path) override;
  void set_document_edited(bool edited) override { frame_->setWindowModified(edited); }
  void make_key_and_order_front() override;
  void close() override;
  bool is_visible() const override { return frame_->isVisible(); }
  bool is_miniaturized() const override { return frame_->isMinimized(); }
  void deminiaturize() override;
  bool is_key() const override { return frame_->isActiveWindow(); }
  platform::responder* first_responder() const override { return &first_; }
  platform::window_delegate* delegate() const override { return &delegate_; }
  void update_value(std::string_view key, plist::value const& value) override;

 private:
  QtDesktop& desktop_;
  platform::window_delegate& delegate_;
  platform::responder& first_;
  EditorFrame* frame_;  // destroys itself a turn after this object
  bool closed_ = false;
};

}  // namespace widgets
