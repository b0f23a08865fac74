#include "keys/key_strings.h"

#include "keys/WynKeyEvent.h"
#include "platform/event.h"
#include "platform/unicode.h"
#include "platform/utf.h"

namespace keys {
namespace {

std::size_t character_length(std::string_view text) {
  std::size_t n = 1;
  while (n < text.size() && (static_cast<unsigned char>(text[n]) & 0xC0) == 0x80) ++n;
  return n;
}

bool is_list_of_strings(plist::value const& v) {
  if (!v.as_array()) return false;
  for (auto const& element : v.elements())
    if (!element.as_string()) return false;
  return true;
}

class normalizer {
 public:
  explicit normalizer(key_binding_complaint const& complain) : complain_(complain) {}

  plist::dictionary run(plist::dictionary const& bindings, std::string const& path) {
    plist::dictionary on_keypad, result;
    for (auto const& [written, value] : bindings) {
      auto const name = path.empty() ? written : path + " " + written;
      std::string why;
      auto const key = NormalizeKeyString(written, &why);
      auto const binding = key ? normalized(value, name, why) : plist::value();
      if (!binding) {
        if (complain_) complain_(name, why);
        continue;
      }
      result[*key] = binding;
      WynKeyEvent event;
      event.initWithString(*key);
      if (!(event.qualifiers() & platform::modifier::keypad)) on_keypad["#" + *key] = binding;
    }
    result.merge(on_keypad);  // keeps what is there: a keypad binding of its own wins
    return result;
  }

 private:
  plist::value normalized(plist::value const& v, std::string const& name, std::string& why) {
    if (auto const* nested = v.as_dictionary()) return run(*nested, name);
    if (v.as_string() || is_list_of_strings(v)) return v;
    why = "the binding is no action, no list of actions and no dictionary";
    return {};
  }

  key_binding_complaint const& complain_;
};

}  // namespace

std::optional<std::string> NormalizeKeyString(std::string_view text, std::string* why) {
  std::uint32_t qualifiers = 0;
  while (!text.empty()) {
    auto const bit = qualifier_for_letter(static_cast<unsigned char>(text[0]));
    if (bit == 0) break;
    qualifiers |= bit;
    text.remove_prefix(1);
  }
  if (text.starts_with('\\')) text.remove_prefix(1);
  // No key sends a line feed, and text editors write one for the carriage return that Return sends.
  if (text == "\n" || text == "\r\n") text = "\r";
  auto const fail = [&](char const* reason) {
    if (why) *why = reason;
    return std::nullopt;
  };
  if (text.empty()) return fail("there is no key after the modifiers");
  if (character_length(text) != text.size()) return fail("there is more than one key");
  return WynKeyEvent(std::string(text), qualifiers).stringRepresentation();
}

std::string with_capital_for_shift(std::string const& key_string) {
  WynKeyEvent event;
  event.initWithString(key_string);
  std::u16string text = unicode::to_utf16(event.key());
  if ((event.qualifiers() & platform::modifier::shift) && text.size() == 1 &&
      unicode::to_upper(text[0]) != text[0]) {
    text[0] = unicode::to_upper(text[0]);
    event.setKeyAndQualifiers(unicode::to_utf8(text),
                              event.qualifiers() & ~platform::modifier::shift);
  }
  return event.stringRepresentation();
}

plist::dictionary NormalizeDictionary(plist::dictionary const& bindings,
                                      key_binding_complaint const& complain) {
  return normalizer(complain).run(bindings, "");
}

}  // namespace keys
