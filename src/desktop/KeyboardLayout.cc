#include "desktop/KeyboardLayout.h"

#include "platform/event.h"

#include <QGuiApplication>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>

namespace widgets {
namespace {

// Core modifier bits of the X protocol. Alt is mod1 and Super mod4 by long custom; the layouts in
// which they are something else use neither for text.
constexpr std::uint32_t shift_mask = 1, lock_mask = 2, control_mask = 4, alt_mask = 8;
constexpr std::uint32_t super_mask = 64, all_masks = 0xFF;

std::uint32_t group_of(std::uint32_t x_state) {
  return (x_state >> 13) & 3;
}

bool is_printable(std::uint32_t c) {
  return c >= 0x20 && c != 0x7F && (c < 0x80 || c >= 0xA0);
}

bool is_ascii_letter(std::uint32_t c) {
  return ('a' <= c && c <= 'z') || ('A' <= c && c <= 'Z');
}

std::u16string to_utf16(std::uint32_t c) {
  if (!is_printable(c)) return {};
  if (c < 0x10000) return {static_cast<char16_t>(c)};
  return {static_cast<char16_t>(0xD7C0 + (c >> 10)), static_cast<char16_t>(0xDC00 | (c & 0x3FF))};
}

}  // namespace

std::unique_ptr<KeyboardLayout> KeyboardLayout::make() {
  auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr) return nullptr;
  std::uint8_t first_event = 0;
  if (!xkb_x11_setup_xkb_extension(
          x11->connection(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
          XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &first_event, nullptr))
    return nullptr;
  return std::unique_ptr<KeyboardLayout>(new KeyboardLayout(x11->connection(), first_event));
}

KeyboardLayout::KeyboardLayout(xcb_connection_t* connection, std::uint8_t first_event)
    : connection_(connection), first_event_(first_event) {
  context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
  qGuiApp->installNativeEventFilter(this);
}

KeyboardLayout::~KeyboardLayout() {
  unload();
  xkb_context_unref(context_);
}

bool KeyboardLayout::nativeEventFilter(QByteArray const&, void* message, qintptr*) {
  struct xkb_event {  // the common head of the extension's events
    std::uint8_t response_type, xkb_type;
  };
  constexpr std::uint8_t new_keyboard = 0, map_changed = 1;
  auto const* const event = static_cast<xkb_event const*>(message);
  if ((event->response_type & 0x7F) == first_event_ &&
      (event->xkb_type == new_keyboard || event->xkb_type == map_changed))
    unload();
  return false;
}

bool KeyboardLayout::load() {
  if (state_ != nullptr) return true;
  if (context_ == nullptr) return false;
  std::int32_t const device = xkb_x11_get_core_keyboard_device_id(connection_);
  if (device < 0) return false;
  keymap_ =
      xkb_x11_keymap_new_from_device(context_, connection_, device, XKB_KEYMAP_COMPILE_NO_FLAGS);
  if (keymap_ != nullptr) state_ = xkb_state_new(keymap_);
  if (state_ == nullptr) return false;
  latin_groups_.clear();
  for (std::uint32_t group = 0; group < xkb_keymap_num_layouts(keymap_); ++group)
    latin_groups_.push_back(is_latin(group));
  return true;
}

void KeyboardLayout::unload() {
  xkb_state_unref(state_);
  xkb_keymap_unref(keymap_);
  state_ = nullptr;
  keymap_ = nullptr;
}

std::uint32_t KeyboardLayout::symbol(std::uint32_t code, std::uint32_t group,
                                     std::uint32_t mods) const {
  xkb_state_update_mask(state_, mods, 0, 0, 0, 0, group);
  return xkb_keysym_to_utf32(xkb_state_key_get_one_sym(state_, code));
}

// Some layouts of other scripts have a Latin letter or two.
bool KeyboardLayout::is_latin(std::uint32_t group) const {
  constexpr int most_of_the_alphabet = 20;
  int letters = 0;
  xkb_keycode_t const last = xkb_keymap_max_keycode(keymap_);
  for (xkb_keycode_t code = xkb_keymap_min_keycode(keymap_); code <= last; ++code)
    if (is_ascii_letter(symbol(code, group, 0))) ++letters;
  return letters >= most_of_the_alphabet;
}

std::u16string KeyboardLayout::latin_text(std::uint32_t code, std::uint32_t x_state,
                                          std::uint32_t modifiers) {
  if (!load()) return {};
  std::uint32_t const group = group_of(x_state);
  if (group < latin_groups_.size() && latin_groups_[group]) return {};
  bool const shift = modifiers & platform::modifier::shift;
  std::uint32_t const mods = shift ? shift_mask : 0;
  auto const latin = std::find(latin_groups_.begin(), latin_groups_.end(), true);
  std::u16string const text =
      latin == latin_groups_.end()
          ? latin_keys_.text(code, shift)
          : to_utf16(symbol(code, static_cast<std::uint32_t>(latin - latin_groups_.begin()), mods));
  std::uint32_t const own = symbol(code, group, mods);
  bool const is_letter = text.size() == 1 && is_ascii_letter(text[0]);
  return is_letter || !is_printable(own) || own >= 0x80 ? text : to_utf16(own);
}

std::u16string KeyboardLayout::text(std::uint32_t code, std::uint32_t x_state,
                                    std::uint32_t modifiers) {
  if (!load()) return {};
  std::uint32_t mods = x_state & all_masks;
  mods &= ~(shift_mask | lock_mask | control_mask | alt_mask | super_mask);
  if (modifiers & platform::modifier::shift) mods |= shift_mask;
  if (modifiers & platform::modifier::option) mods |= alt_mask;

  return to_utf16(symbol(code, group_of(x_state), mods));
}

}  // namespace widgets
