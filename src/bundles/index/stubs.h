#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bundles/files/item_kinds.h"
#include "plist/value.h"

namespace bundles {

/// What a file of a bundle says for look-ups, so that the file itself is opened only when its item
/// is used. Kept in the index.

struct BundleStub {
  std::string UUID;
  std::string path;  ///< of the bundle's info.plist
};

/// The keys that all kinds of items have in common; empty where there is none, or none of the right
/// type.
struct item_keys {
  std::string uuid, name, scope, tabTrigger, keyEquivalent, mouseGesture;
  std::vector<std::string> draggedFileExtensions;
};

/// The names of those that are texts.
struct item_text_key {
  std::string_view key;
  std::string item_keys::*field;
};
inline constexpr std::array<item_text_key, 6> item_text_keys = {{
    {"uuid", &item_keys::uuid},
    {"name", &item_keys::name},
    {"scope", &item_keys::scope},
    {"tabTrigger", &item_keys::tabTrigger},
    {"keyEquivalent", &item_keys::keyEquivalent},
    {"mouseGesture", &item_keys::mouseGesture},
}};
inline constexpr std::string_view dragged_extensions_key = "draggedFileExtensions";
/// What is kept of grammars besides: these determine a file's language.
inline constexpr std::array<std::string_view, 4> language_keys = {
    "scopeName", "fileTypes", "firstLineMatch", "firstLineMatchLast"};

struct BundleItemStub {
  std::string path;  ///< of the item's property list
  item_keys keys;
  /// For a file that holds only changes: `isDelta`, and of `changed` and `deleted` what concerns
  /// look-ups. For any other grammar what determines which files are in its language. Else nothing.
  plist::value more;

  bool is_delta() const { return more["isDelta"].integer_or(0) != 0; }
};

/// Reads them from a dictionary. A key equivalent becomes the form in which keys are looked up.
item_keys keys_from(plist::value const& dictionary);
/// The same the other way round; what is empty is absent.
plist::dictionary dictionary_from(item_keys const& keys);
/// The form in which keys are looked up.
std::string normalized_key_equivalent(std::string const& text);

/// The entries under `language_keys`.
plist::dictionary language_entries(plist::value const& dictionary);

/// The digest of an item's dictionary, which was read from `path`; nothing, after a complaint, when
/// it has no `uuid`. Wrong types are complained about.
std::optional<BundleItemStub> stub_from(plist::value const& dictionary, std::string path,
                                        item_kind kind);

}  // namespace bundles
