#pragma once

#include "platform/geometry.h"

#include <cstdint>
#include <functional>
#include <string>

/// Input events as the logic sees them, whatever window system they came from.
namespace platform {

/// Bits of a modifier mask. Command is the desktop's Ctrl key, control its Meta (Super) key,
/// option its Alt key.
namespace modifier {
inline constexpr std::uint32_t shift = 0x20000;
inline constexpr std::uint32_t control = 0x40000;
inline constexpr std::uint32_t option = 0x80000;
inline constexpr std::uint32_t command = 0x100000;
inline constexpr std::uint32_t keypad = 0x200000;
inline constexpr std::uint32_t function = 0x800000;
}  // namespace modifier

/// Keys without a character of their own have one from the private use area.
namespace function_key {
inline constexpr char16_t up = 0xF700, down = 0xF701, left = 0xF702, right = 0xF703;
inline constexpr char16_t f1 = 0xF704;  // F1 to F35 follow each other
inline constexpr char16_t insert = 0xF727, forward_delete = 0xF728, home = 0xF729, end = 0xF72B;
inline constexpr char16_t page_up = 0xF72C, page_down = 0xF72D, num_lock = 0xF739;
inline constexpr char16_t menu = 0xF735, help = 0xF746;
inline constexpr char16_t enter = 0x03, tab = 0x09, return_key = 0x0D, back_tab = 0x19;
inline constexpr char16_t escape = 0x1B, backspace = 0x7F;
}  // namespace function_key

struct key_event {
  /// The text that the key gives with all its modifiers but Ctrl and Meta applied, so that
  /// Ctrl+A gives "a"; empty for a dead key.
  std::u16string characters;
  /// The same with no modifier but Shift.
  std::u16string characters_ignoring_modifiers;
  std::uint32_t modifiers = 0;
  /// The text of this key under other modifiers (shift, option, command) on the present keyboard
  /// layout. Null where the window system doesn't tell.
  std::function<std::u16string(std::uint32_t modifiers)> string_for;
};

enum class mouse_button : std::uint8_t { left, middle, right };

struct mouse_event {
  point position;  // in the coordinates of the view
  mouse_button button = mouse_button::left;
  int click_count = 1;
  std::uint32_t modifiers = 0;
};

}  // namespace platform
