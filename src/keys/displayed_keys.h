#pragma once

#include "platform/menu.h"
#include "plist/value.h"

#include <string>
#include <string_view>
#include <vector>

namespace keys {

/// A key string as menus show it, in UTF-8: "Ctrl+Shift+Z" for "@Z" and for "$@z". Empty for an
/// empty one.
std::string displayed_key(std::string_view key_string);
/// Keys pressed one after the other: "Ctrl+X Ctrl+U".
std::string displayed_keys(std::vector<std::string> const& key_strings);

/// Gives each entry the keys that do the same by a binding, after its own, which is dropped where a
/// binding gives it another meaning. Of several bindings those of few strokes and characters come
/// first; what the keypad does like the main keyboard isn't listed.
void add_bound_keys(std::vector<platform::menu_item>& items, plist::dictionary const& bindings);

}  // namespace keys
