#pragma once

#include <cstdint>
#include <string>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace widgets {

/// The keys of a keyboard by their places, as the layout of the United States has them: what
/// shortcuts mean where the layouts in use have no Latin letters. Loaded at first use, which takes
/// some milliseconds.
class LatinKeys {
 public:
  LatinKeys() = default;
  LatinKeys(LatinKeys const&) = delete;
  LatinKeys& operator=(LatinKeys const&) = delete;
  ~LatinKeys();

  /// The character of hardware key `code`, as X11 and Wayland count keys. Empty for a key without
  /// one, and where the system has no such layout.
  std::u16string text(std::uint32_t code, bool shift);

 private:
  void load();

  bool tried_ = false;
  xkb_context* context_ = nullptr;
  xkb_keymap* keymap_ = nullptr;
  xkb_state* state_ = nullptr;
};

}  // namespace widgets
