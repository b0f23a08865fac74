#pragma once

#include "desktop/WindowOwner.h"

#include <QMainWindow>

#include <functional>

namespace widgets {

/// The widget of a window, with the menus. It outlives its window until Qt's next turn, since
/// actions that close the window come out of its own menus and keys.
class WindowFrame : public QMainWindow, public MenuTarget {
 public:
  /// Of `window`, delegate and first responder are asked for only by events.
  WindowFrame(WindowOwner& owner, platform::window& window);

  /// The window goes: nothing of the logic is called from here on.
  virtual void detach() { window_ = nullptr; }
  /// Where it was last set or shown, or else in its initial size.
  void show_placed();
  /// Its placement remains known.
  void hide_placed();
  std::string placement() const;
  void set_placement(std::string const& placement);

  MenuBar& menus() const { return *menus_; }

  /// What gets the actions of menus, where it isn't the window's first responder; or null.
  virtual platform::responder* focused_responder() const { return nullptr; }
  /// Where there is one.
  virtual void enter_status_bar() {}

  // MenuTarget
  platform::responder* menu_responder() override;
  std::vector<platform::menu_item> dynamic_items(std::string_view name) override;
  void perform(std::string_view selector, plist::value const& argument) override;

 protected:
  WindowOwner& owner() const { return owner_; }
  /// Before the window is shown for the first time, without a placement.
  virtual void take_initial_size() = 0;
  /// False if no item of the menus has the key. One that is disabled beeps.
  bool perform_item_with_key(platform::key_event const& event);

  void closeEvent(QCloseEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  /// What the user wants done; it is, when nothing waits.
  void deliver(std::function<void()> input);

  WindowOwner& owner_;
  platform::window* window_;
  MenuBar* menus_;
  bool is_placed_ = false;
  std::string last_placement_;  // when it was hidden
};

}  // namespace widgets
