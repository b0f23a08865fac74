#pragma once

#include "desktop/LatinKeys.h"

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct xcb_connection_t;
struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace widgets {

/// The X server's keyboard layout: what text a key gives under modifiers other than those held.
/// Main thread only.
class KeyboardLayout final : private QAbstractNativeEventFilter {
 public:
  /// Null where the window system tells no layout (Wayland, no window system).
  static std::unique_ptr<KeyboardLayout> make();
  ~KeyboardLayout() override;

  /// The text of hardware key `code` while `state`, the X server's modifiers, is in force, with
  /// Shift, Alt and Ctrl replaced by those of `modifiers` (platform/event.h). Locks and AltGr
  /// stay as they are, but Caps Lock counts for nothing. Empty for a key without text.
  std::u16string text(std::uint32_t code, std::uint32_t state, std::uint32_t modifiers);
  /// What the key means in a shortcut where the layout in force has no Latin letters: the
  /// character on it in another layout of the keyboard that has, else by its place. A key that
  /// gives an ASCII character of its own keeps that, unless it is where a letter belongs. Empty
  /// where the layout is a Latin one. Of the modifiers Shift alone counts.
  std::u16string latin_text(std::uint32_t code, std::uint32_t state, std::uint32_t modifiers);

 private:
  KeyboardLayout(xcb_connection_t* connection, std::uint8_t first_event);

  bool nativeEventFilter(QByteArray const& type, void* message, qintptr* result) override;
  bool load();
  void unload();
  std::uint32_t symbol(std::uint32_t code, std::uint32_t group, std::uint32_t mods) const;
  bool is_latin(std::uint32_t group) const;

  xcb_connection_t* connection_;
  std::uint8_t first_event_;
  xkb_context* context_ = nullptr;
  xkb_keymap* keymap_ = nullptr;  // null until needed, and after a change of the layout
  xkb_state* state_ = nullptr;
  std::vector<bool> latin_groups_;
  LatinKeys latin_keys_;
};

}  // namespace widgets
