#include "regex/word_characters.h"

#include <memory>

#include "platform/utf.h"
#include "settings/store.h"

static constexpr char const* key = "WynWordCharacters";

WynWordCharacters& WynWordCharacters::shared() {
  // Never destroyed: objects that are may still ask.
  static WynWordCharacters& instance = *new WynWordCharacters;
  return instance;
}

WynWordCharacters::WynWordCharacters() {
  reload();
  token_ = platform::notification_center::standard().observe(platform::user_defaults::did_change,
                                                             [this](auto const&) { reload(); });
}

void WynWordCharacters::reload() {
  std::string characters = settings::store().string(key);
  if (characters == characters_) return;
  characters_ = std::move(characters);
  rebuild(unicode::to_utf16(characters_));
}

void WynWordCharacters::rebuild(std::u16string_view characters) {
  auto bits = std::make_unique<std::array<std::uint64_t, 1024>>();
  for (char16_t u : characters) (*bits)[u >> 6] |= std::uint64_t{1} << (u & 63);
  for (std::size_t i = 0; i < bits_.size(); ++i) {
    bits_[i].store((*bits)[i], std::memory_order_relaxed);
  }
}
