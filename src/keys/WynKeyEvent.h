#pragma once

#include "platform/event.h"

#include <cstdint>
#include <string>
#include <string_view>

/// A key with its modifiers, in the form that key bindings and bundle items name it.
///
/// The string form is the letters of the modifiers in the order "#^~$@" (keypad, control, option,
/// shift, command) and then the key: "@s" is Ctrl+S, "~$x" is Alt+Shift+X. Texts are UTF-8. A key
/// is one character; those of keys without a character of their own are in platform/event.h.
class WynKeyEvent {
 public:
  /// The modifiers that an event keeps.
  static constexpr std::uint32_t qualifier_mask = 0x3E0000;

  WynKeyEvent() = default;
  WynKeyEvent(std::string key, std::uint32_t qualifiers);

  static WynKeyEvent keyEvent() { return {}; }
  static WynKeyEvent keyEventWithEvent(platform::key_event const& event);
  /// Reads the string form, and remembers it: the result is valid to the end of the process. Null
  /// for an empty string. Main thread only.
  static WynKeyEvent const* keyEventWithString(std::string_view text);

  /// Never fails: an event without a character gives an event without a key.
  void initWithEvent(platform::key_event const& event);
  /// Every character but the last is a modifier's letter, or is ignored; the last one is the key.
  /// False, without a change, for an empty text.
  bool initWithString(std::string_view text);
  /// Takes the key from the keyboard layout, so that it doesn't depend on what a modifier makes of
  /// it. False, without a change, when the event comes without a layout or without a plain key.
  bool parseEvent(platform::key_event const& event);

  /// Equal keys and modifiers; a key on the keypad also equals its twin on the main keyboard, but
  /// not the other way round.
  bool isEqual(WynKeyEvent const& other) const;

  /// Empty when there is no key.
  std::string stringRepresentation() const;

  std::string const& key() const { return key_; }
  void setKey(std::string key) { key_ = std::move(key); }
  std::uint32_t qualifiers() const { return qualifiers_; }
  void setQualifiers(std::uint32_t qualifiers) { qualifiers_ = qualifiers & qualifier_mask; }
  void setKeyAndQualifiers(std::string key, std::uint32_t qualifiers);

  /// The signs of the modifiers, shift included for a key that is an upper-case letter.
  std::string modifierGlyphs() const;
  static std::string glyphsForModifiers(std::uint32_t qualifiers);
  std::string keyGlyph() const;
  /// How lists and menus show the event; "(none)" without a key.
  std::string glyphRepresentation() const;

 private:
  void initFromCharacters(platform::key_event const& event);

  std::string key_;
  std::uint32_t qualifiers_ = 0;
};

namespace keys {

/// The modifier of a letter of "#^~$@"; 0 for any other character.
std::uint32_t qualifier_for_letter(char32_t letter);

}  // namespace keys
