#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "platform/notification_center.h"

/// The characters that count as parts of words beside letters and digits: the user default
/// `WynWordCharacters`, which is "_" unless the user sets it. It is read when this is made and
/// whenever the user defaults change. Made on the main thread; asked on any thread.
class WynWordCharacters {
 public:
  static WynWordCharacters& shared();

  /// Whether the unit is one of the string's. During a change another thread may see some
  /// characters changed and others not yet.
  bool isWordCharacter(char16_t u) const {
    return bits_[u >> 6].load(std::memory_order_relaxed) >> (u & 63) & 1;
  }

 private:
  WynWordCharacters();
  void reload();
  void rebuild(std::u16string_view characters);

  std::array<std::atomic<std::uint64_t>, 1024> bits_{};  // one for each unit
  std::string characters_;                               // UTF-8, as last read
  platform::notification_center::token token_;
};
