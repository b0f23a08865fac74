#pragma once

#include "plist/value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace keys {

/// The strict reading of keys that people write into files.

/// The canonical form of a key string: modifier letters in any order, then one key, before which a
/// backslash takes away any meaning ("@\\@" is Ctrl+@). Any line break is Return. Nothing, and then
/// `why`, for a text without a key or with more after it.
std::optional<std::string> NormalizeKeyString(std::string_view text, std::string* why = nullptr);

/// The form in which events come: a letter with Shift is named by its capital alone. A menu may
/// have it in either form.
std::string with_capital_for_shift(std::string const& key_string);

/// Hears of an entry that is left out: its key (with those of the dictionaries round it) and why.
using key_binding_complaint = std::function<void(std::string const& key, std::string const& why)>;

/// The bindings under canonical keys, nested dictionaries included. A value is an action, an array
/// of actions or a dictionary for the next stroke; what is neither is left out, as are bad keys. A
/// binding also serves the same key on the keypad, unless that has one of its own.
plist::dictionary NormalizeDictionary(plist::dictionary const& bindings,
                                      key_binding_complaint const& complain = {});

}  // namespace keys
