#include "desktop/KeyboardLayout.h"

#include "platform/event.h"

#include <QGuiApplication>

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace widgets {
namespace {

// Core modifier bits of the X protocol. Alt is mod1 and Super mod4 by long custom; the layouts in
// which they are something else use neither for text.
constexpr std::uint32_t shift_mask = 1, lock_mask = 2, control_mask = 4, alt_mask = 8;
constexpr std::uint32_t super_mask = 64, all_masks = 0xFF;
constexpr std::uint32_t no_text = 0;

std::uint32_t group_of(std::uint32_t x_state) {
  return (x_state >> 13) & 3;
}

bool is_printable(std::uint32_t c) {
  return c >= 0x20 && c != 0x7F && (c < 0x80 || c >= 0xA0);
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
  return state_ != nullptr;
}

void KeyboardLayout::unload() {
  xkb_state_unref(state_);
  xkb_keymap_unref(keymap_);
  state_ = nullptr;
  keymap_ = nullptr;
}

// Ctrl with a key of a Cyrillic or Greek layout means the Latin letter on the same key.
std::uint32_t KeyboardLayout::latin_symbol(std::uint32_t code, std::uint32_t mods) const {
  xkb_layout_index_t const layouts = xkb_keymap_num_layouts_for_key(keymap_, code);
  for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
    xkb_state_update_mask(state_, mods, 0, 0, 0, 0, layout);
    std::uint32_t const c = xkb_keysym_to_utf32(xkb_state_key_get_one_sym(state_, code));
    if (is_printable(c) && c < 0x80) return c;
  }
  return no_text;
}

std::u16string KeyboardLayout::text(std::uint32_t code, std::uint32_t x_state,
                                    std::uint32_t modifiers) {
  if (!load()) return {};
  std::uint32_t mods = x_state & all_masks;
  mods &= ~(shift_mask | lock_mask | control_mask | alt_mask | super_mask);
  if (modifiers & platform::modifier::shift) mods |= shift_mask;
  if (modifiers & platform::modifier::option) mods |= alt_mask;

  xkb_state_update_mask(state_, mods, 0, 0, 0, 0, group_of(x_state));
  std::uint32_t c = xkb_keysym_to_utf32(xkb_state_key_get_one_sym(state_, code));
  if ((modifiers & platform::modifier::command) && c >= 0x80)
    if (std::uint32_t const latin = latin_symbol(code, mods); latin != no_text) c = latin;
  return to_utf16(c);
}

}  // namespace widgets
