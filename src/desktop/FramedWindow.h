#pragma once

#include "desktop/Activation.h"
#include "desktop/WindowFrame.h"

#include <string>
#include <utility>

namespace widgets {

/// What windows of either Kind, a platform::editor_window or platform::html_window, do by their
/// Frame, which is a WindowFrame.
template <class Kind, class Frame>
class FramedWindow : public Kind {
 public:
  /// `more` is what the Frame takes after owner and window.
  template <class... More>
  FramedWindow(WindowOwner& owner, platform::window_delegate& delegate, platform::responder& first,
               More&... more)
      : owner_(owner),
        delegate_(delegate),
        first_(first),
        frame_(new Frame(owner, static_cast<platform::window&>(*this), more...)) {
    owner_.add(*this);
  }
  ~FramedWindow() override {
    owner_.remove(*this);
    frame_->detach();
    frame_->hide();
    frame_->deleteLater();
  }

  void make_key_and_order_front() final {
    if (is_miniaturized()) deminiaturize();
    frame_->show_placed();
    frame_->raise();
    frame_->activateWindow();
    owner_.bring_to_front(*this);
  }
  void come_to_front(std::string const& activation_token) final {
    use_activation_token(activation_token);
    make_key_and_order_front();
    ask_for_activation(*frame_, activation_token);
  }
  bool is_visible() const final { return frame_->isVisible(); }
  bool is_miniaturized() const final { return frame_->isMinimized(); }
  void deminiaturize() final {
    frame_->setWindowState(frame_->windowState() & ~Qt::WindowMinimized);
  }
  bool is_full_screen() const final { return frame_->isFullScreen(); }
  void toggle_full_screen() final {
    frame_->setWindowState(frame_->windowState() ^ Qt::WindowFullScreen);
  }
  void open_menu_bar() final { frame_->menus().open_first(); }
  void enter_status_bar() final { frame_->enter_status_bar(); }
  std::string placement() const final { return frame_->placement(); }
  void set_placement(std::string const& placement) final { frame_->set_placement(placement); }
  bool is_key() const final { return frame_->isActiveWindow(); }
  platform::responder* first_responder() const final {
    platform::responder* const focused = frame_->focused_responder();
    return focused != nullptr ? focused : &first_;
  }
  platform::window_delegate* delegate() const final { return &delegate_; }

 protected:
  Frame& widget() const { return *frame_; }
  void hide() {
    frame_->hide_placed();
    owner_.window_closed();
  }
  /// False from its second call on.
  bool begin_closing() { return !std::exchange(is_closed_, true); }

 private:
  WindowOwner& owner_;
  platform::window_delegate& delegate_;
  platform::responder& first_;
  Frame* frame_;  // destroys itself a turn after this object
  bool is_closed_ = false;
};

}  // namespace widgets
