#include "keys/WynKeyEvent.h"

#include "keys/key_glyphs.h"
#include "platform/unicode.h"
#include "platform/utf.h"

#include <map>

namespace {

namespace mod = platform::modifier;
namespace fk = platform::function_key;

struct qualifier_letter {
  char letter;
  std::uint32_t bit;
};

// In the order in which they are printed.
constexpr qualifier_letter qualifier_letters[] = {{'#', mod::keypad},
                                                  {'^', mod::control},
                                                  {'~', mod::option},
                                                  {'$', mod::shift},
                                                  {'@', mod::command}};

constexpr std::uint32_t enclosing_keycap = 0x20E3;

/// Where the last character of a non-empty UTF-8 text begins.
std::size_t last_character(std::string_view text) {
  std::size_t i = text.size() - 1;
  while (i > 0 && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) --i;
  return i;
}

/// The first character of a text; 0 for an empty one.
char32_t first_code_point(std::u16string_view text) {
  return text.empty() ? 0 : unicode::code_point_at(text, 0);
}

std::u16string_view first_character(std::u16string_view text) {
  return text.substr(0, first_code_point(text) > 0xFFFF ? 2 : 1);
}

bool is_printable(char32_t c) {
  return c >= 33 && c <= 126;
}

bool is_plain_ascii(std::u16string_view text) {
  return !text.empty() && text[0] >= 0x20 && text[0] < 0x7F;
}

/// The texts that one key gives under various modifiers, each cut to one character.
class key_texts {
 public:
  explicit key_texts(platform::key_event const& event) : event_(event) {}
  std::u16string under(std::uint32_t modifiers) const {
    return std::u16string(first_character(event_.string_for(modifiers)));
  }

  /// Whether the event's text is one that shift and option account for. It isn't where a modifier
  /// that has no bit, such as AltGr, was down.
  bool explain_characters() const {
    auto const typed = unicode::lowercase(unicode::to_utf8(first_character(event_.characters)));
    if (typed.empty()) return true;
    auto const held = event_.modifiers & (mod::shift | mod::option);
    for (std::uint32_t m : {0U, mod::shift, held, held & mod::option, mod::command})
      if (unicode::lowercase(unicode::to_utf8(under(m))) == typed) return true;
    return false;
  }

 private:
  platform::key_event const& event_;
};

}  // namespace

std::uint32_t keys::qualifier_for_letter(char32_t letter) {
  for (auto const& row : qualifier_letters)
    if (letter == static_cast<char32_t>(row.letter)) return row.bit;
  return 0;
}

WynKeyEvent::WynKeyEvent(std::string key, std::uint32_t qualifiers) {
  setKeyAndQualifiers(std::move(key), qualifiers);
}

void WynKeyEvent::setKeyAndQualifiers(std::string key, std::uint32_t qualifiers) {
  setKey(std::move(key));
  setQualifiers(qualifiers);
}

WynKeyEvent WynKeyEvent::keyEventWithEvent(platform::key_event const& event) {
  WynKeyEvent result;
  result.initWithEvent(event);
  return result;
}

WynKeyEvent const* WynKeyEvent::keyEventWithString(std::string_view text) {
  static std::map<std::string, WynKeyEvent, std::less<>> known;
  if (auto it = known.find(text); it != known.end()) return &it->second;
  WynKeyEvent event;
  if (!event.initWithString(text)) return nullptr;
  return &known.emplace(text, std::move(event)).first->second;
}

bool WynKeyEvent::initWithString(std::string_view text) {
  if (text.empty()) return false;
  auto const at = last_character(text);
  std::uint32_t qualifiers = 0;
  for (unsigned char c : text.substr(0, at)) qualifiers |= keys::qualifier_for_letter(c);
  setKeyAndQualifiers(std::string(text.substr(at)), qualifiers);
  return true;
}

void WynKeyEvent::initWithEvent(platform::key_event const& event) {
  if (!parseEvent(event)) initFromCharacters(event);
}

bool WynKeyEvent::parseEvent(platform::key_event const& event) {
  if (!event.string_for) return false;
  key_texts const texts(event);
  auto const base = texts.under(0);
  if (base.empty() || !texts.explain_characters()) return false;

  auto const flags = event.modifiers;
  std::u16string key = base;
  auto qualifiers = flags & (mod::control | mod::command);
  if ((flags & mod::keypad) && std::u16string_view(u"0123456789=/*-+.,").find(base) != base.npos)
    qualifiers |= mod::keypad;

  // Some layouts change altogether while Ctrl is down.
  auto const command = (flags & mod::command) ? texts.under(mod::command) : base;
  if (command != base && !command.empty()) {
    key = command;
    qualifiers |= flags & mod::option;
    if ((flags & mod::shift) && unicode::is_alpha(key[0]))
      key[0] = unicode::to_upper(key[0]);
    else
      qualifiers |= flags & mod::shift;
    setKeyAndQualifiers(unicode::to_utf8(key), qualifiers);
    return true;
  }

  // A modifier that made another ASCII character is part of the key and not kept beside it. On most
  // layouts Alt makes nothing, and then Alt+Shift+X must not lose it.
  auto const makes_key = [&](std::uint32_t held, std::u16string const& without) {
    auto const text = texts.under(held);
    if (!is_plain_ascii(text) || text == base || text == without) return false;
    key = text;
    return true;
  };
  auto relevant = flags & (mod::shift | mod::option);
  if ((flags & mod::option) && !makes_key(relevant, texts.under(flags & mod::shift))) {
    qualifiers |= mod::option;
    relevant &= ~mod::option;
  }
  if ((flags & mod::shift) && !makes_key(relevant, base)) qualifiers |= mod::shift;
  setKeyAndQualifiers(unicode::to_utf8(key), qualifiers);
  return true;
}

void WynKeyEvent::initFromCharacters(platform::key_event const& event) {
  auto flags = event.modifiers;
  auto c = first_character(event.characters);
  auto const i = first_character(event.characters_ignoring_modifiers);
  if (flags & mod::keypad) {
    if ((flags & mod::function) || first_code_point(c) == fk::enter) flags &= ~mod::keypad;
  } else {
    if (flags & mod::control) {
      c = i;
    } else if (flags & mod::option) {
      if (i != c && is_printable(first_code_point(c)))
        flags &= ~mod::option;
      else
        c = i;
    } else if ((flags & mod::shift) && (flags & mod::command)) {
      c = i;
    }
    if (is_printable(first_code_point(c)) || first_code_point(c) == fk::back_tab)
      flags &= ~mod::shift;
  }
  setKeyAndQualifiers(unicode::to_utf8(c), flags);
}

bool WynKeyEvent::isEqual(WynKeyEvent const& other) const {
  return key_ == other.key_ &&
         (qualifiers_ == other.qualifiers_ || (qualifiers_ & ~mod::keypad) == other.qualifiers_);
}

std::string WynKeyEvent::stringRepresentation() const {
  if (key_.empty()) return {};
  std::string result;
  for (auto const& row : qualifier_letters)
    if (qualifiers_ & row.bit) result += row.letter;
  return result + key_;
}

std::string WynKeyEvent::glyphsForModifiers(std::uint32_t qualifiers) {
  std::string result;
  if (qualifiers & mod::control) result += keys::glyph_named("control");
  if (qualifiers & mod::option) result += keys::glyph_named("modifier");
  if (qualifiers & mod::shift) result += keys::glyph_named("shift");
  if (qualifiers & mod::command) result += keys::glyph_named("command");
  return result;
}

std::string WynKeyEvent::modifierGlyphs() const {
  bool const upper = unicode::lowercase(key_) != key_;
  return glyphsForModifiers(qualifiers_ | (upper ? mod::shift : 0));
}

std::string WynKeyEvent::keyGlyph() const {
  char32_t const key = first_code_point(unicode::to_utf16(key_));
  if (key >= fk::f1 && key <= 0xF726) return "F" + std::to_string(key - fk::f1 + 1);
  if (auto const name = keys::name_of_key(key); !name.empty()) {
    bool const on_keypad = (qualifiers_ & mod::keypad) && key != fk::enter;
    std::u16string const keycap(1, static_cast<char16_t>(enclosing_keycap));
    return keys::glyph_named(name) + (on_keypad ? unicode::to_utf8(keycap) : "");
  }
  if (key == 0xA0) return "nbsp";
  return unicode::uppercase(key_);
}

std::string WynKeyEvent::glyphRepresentation() const {
  return key_.empty() ? "(none)" : modifierGlyphs() + keyGlyph();
}
