#pragma once

#include "platform/menu.h"
#include "platform/responder.h"
#include "platform/tab_bar.h"
#include "platform/view.h"
#include "plist/value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class side_bar;
class tree_client;

/// Controls a window: the last but one in its responder chain, before the application.
class window_delegate : public responder {
 public:
  /// The user asks to close; true lets the window go.
  virtual bool windowShouldClose() = 0;
  /// The window is closed: the last call for it. The delegate may destroy itself here.
  virtual void windowWillClose() = 0;
  virtual void windowDidBecomeKey() = 0;
  virtual bool isDocumentEdited() const = 0;
};

/// A window with a status bar. Owned by its delegate; main thread only.
class window {
 public:
  virtual ~window() = default;

  /// Tells it from all other windows of the process, closed ones too; from 1.
  std::uint32_t number() const { return number_; }

  virtual void set_title(std::string const& title) = 0;
  virtual void set_represented_filename(std::string const& path) = 0;
  virtual void set_document_edited(bool edited) = 0;

  virtual void make_key_and_order_front() = 0;
  /// The same, but over the windows of other programs too: the user has asked one of them for it,
  /// which got this token of the desktop for that (XDG_ACTIVATION_TOKEN or DESKTOP_STARTUP_ID), or
  /// an empty one.
  virtual void come_to_front(std::string const& /*activation_token*/) {
    make_key_and_order_front();
  }
  virtual void close() = 0;  // without a question; calls windowWillClose
  virtual bool is_visible() const = 0;
  virtual bool is_miniaturized() const = 0;
  virtual void deminiaturize() = 0;
  virtual bool is_full_screen() const = 0;
  virtual void toggle_full_screen() = 0;
  virtual bool is_key() const = 0;
  /// The window's place on the screen, to be kept and set again; empty before it was shown.
  virtual std::string placement() const = 0;
  /// Before it is shown. What isn't a placement, or one for screens that are very different, is
  /// ignored; one beyond the screens is moved and made smaller. A place that another window has
  /// gives the size alone.
  virtual void set_placement(std::string const& placement) = 0;
  /// What a window with nothing in it offers instead, as a quiet list; none takes it away.
  virtual void set_offers(std::vector<menu_item> const& items) = 0;

  /// For the keyboard: its first menu is selected.
  virtual void open_menu_bar() = 0;
  /// Likewise: keys go to the status bar, until one leaves it.
  virtual void enter_status_bar() = 0;

  /// Where actions of menus and keys start.
  virtual responder* first_responder() const = 0;
  virtual window_delegate* delegate() const = 0;

  /// A value published for the status bar: "lineNumber", "columnNumber" (both from 0), "tabSize",
  /// "softTabs", "overwriteMode", and as texts to show "tabSizeOrigin" and "softTabsOrigin" (why
  /// they are so; "" for a default), "fileState", "fileEncoding", "lineEnding", "currentMode",
  /// "currentSymbol", "selection", "snippetField" and "pendingKeys".
  virtual void update_value(std::string_view key, plist::value const& value) = 0;

 private:
  static inline std::uint32_t last_number_ = 0;
  std::uint32_t const number_ = ++last_number_;
};

/// A window with a text view. Its other parts are made when they are first asked for, so that a
/// window without them costs nothing more; they live as long as the window.
class editor_window : public window {
 public:
  /// Above the text. `delegate` is that of the first call, and must outlive the window.
  virtual tab_bar& tabs(tab_bar_delegate& delegate) = 0;
  /// Beside the text, not visible at first. While the keyboard is there `actions` gets what menus
  /// do. Both are those of the first call; the client may go before the window if it tells its
  /// host, and `actions` with it.
  virtual side_bar& side(tree_client& client, responder& actions) = 0;
};

}  // namespace platform
