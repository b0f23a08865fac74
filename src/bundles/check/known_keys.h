#pragma once

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

#include "bundles/files/item_kinds.h"

/// The keys that the program looks at in the property lists of bundles and themes, and what may
/// stand under them. Any thread.
namespace bundles {

enum class content_type : std::uint8_t {
  text,
  number,  // or a boolean, or a text that is one
  list,
  texts,  // a list of them
  table,
  pattern,
  end_pattern,  // with references to groups of the begin pattern
  selector,
  key_event,
  gesture,  // letters for strokes
  color,
  pairs,      // a list of lists of two texts
  variables,  // a list of tables with name and value
  captures,   // a table from group number to a table with a name
  menu,       // a table of items, excludedItems and submenus
  groups,     // a table from UUID to a table with name and items
  program,    // substitutions for symbols
  programs,   // a list of names, or of tables with command and package
};
using key_types = std::map<std::string_view, content_type>;

/// Of property lists of the kind, with those that all kinds of items have.
key_types const& keys_of_kind(item_kind kind);
/// Of the rules in a grammar, and of the grammar itself.
key_types const& rule_keys();
/// Of `settings` in preferences, and in the rules of themes.
key_types const& setting_keys();
/// Of a theme, and of a rule in it.
key_types const& theme_keys();
key_types const& theme_rule_keys();

/// The texts that may stand under the key; empty where any may.
std::vector<std::string_view> const& choices_for(std::string_view key);

}  // namespace bundles
