#include "desktop/LatinKeys.h"

#include <xkbcommon/xkbcommon.h>

namespace widgets {

LatinKeys::~LatinKeys() {
  xkb_state_unref(state_);
  xkb_keymap_unref(keymap_);
  xkb_context_unref(context_);
}

void LatinKeys::load() {
  tried_ = true;
  context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
  xkb_rule_names const names = {"evdev", "pc105", "us", "", ""};
  if (context_ != nullptr)
    keymap_ = xkb_keymap_new_from_names(context_, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
  if (keymap_ != nullptr) state_ = xkb_state_new(keymap_);
}

std::u16string LatinKeys::text(std::uint32_t code, bool shift) {
  if (!tried_) load();
  if (state_ == nullptr) return {};
  constexpr std::uint32_t shift_mask = 1;
  xkb_state_update_mask(state_, shift ? shift_mask : 0, 0, 0, 0, 0, 0);
  std::uint32_t const c = xkb_keysym_to_utf32(xkb_state_key_get_one_sym(state_, code));
  return 0x20 < c && c < 0x7F ? std::u16string(1, static_cast<char16_t>(c)) : std::u16string();
}

}  // namespace widgets
