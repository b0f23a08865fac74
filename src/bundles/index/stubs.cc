#include "bundles/index/stubs.h"

#include "bundles/check/type_check.h"
#include "bundles/files/item_file.h"
#include "keys/WynKeyEvent.h"
#include "platform/log.h"

#include <algorithm>

namespace bundles {
namespace {

// What a delta may change for look-ups. The identity isn't among them.
bool is_relevant(std::string_view key, item_kind kind) {
  if (key == dragged_extensions_key) return true;
  if (kind == item_kind::language &&
      std::find(language_keys.begin(), language_keys.end(), key) != language_keys.end())
    return true;
  for (std::size_t n = 1; n < item_text_keys.size(); ++n)
    if (item_text_keys[n].key == key) return true;
  return false;
}

plist::value relevant_changes(plist::value const& delta, item_kind kind) {
  plist::dictionary changed;
  for (auto const& [key, value] : delta["changed"].entries())
    if (is_relevant(key, kind)) changed.emplace(key, value);
  plist::array deleted;
  for (plist::value const& key : delta["deleted"].elements())
    if (key.as_string() && is_relevant(*key.as_string(), kind)) deleted.push_back(key);
  return plist::dictionary{
      {"isDelta", true}, {"changed", std::move(changed)}, {"deleted", std::move(deleted)}};
}

}  // namespace

std::string normalized_key_equivalent(std::string const& text) {
  WynKeyEvent const* const event = WynKeyEvent::keyEventWithString(text);
  return event ? event->stringRepresentation() : "";
}

item_keys keys_from(plist::value const& dictionary) {
  item_keys keys;
  for (auto const& [key, field] : item_text_keys)
    if (auto const* text = dictionary[key].as_string()) keys.*field = *text;
  keys.draggedFileExtensions = bundles::string_array(dictionary, dragged_extensions_key);
  keys.keyEquivalent = normalized_key_equivalent(keys.keyEquivalent);
  return keys;
}

plist::dictionary dictionary_from(item_keys const& keys) {
  plist::dictionary result;
  for (auto const& [key, field] : item_text_keys)
    if (!(keys.*field).empty()) result.emplace(key, keys.*field);
  if (!keys.draggedFileExtensions.empty())
    result.emplace(dragged_extensions_key, plist::array(keys.draggedFileExtensions.begin(),
                                                        keys.draggedFileExtensions.end()));
  return result;
}

plist::dictionary language_entries(plist::value const& dictionary) {
  plist::dictionary result;
  for (std::string_view const key : language_keys)
    if (plist::value const& v = dictionary[key]) result.emplace(key, v);
  return result;
}

std::optional<BundleItemStub> stub_from(plist::value const& dictionary, std::string path,
                                        item_kind kind) {
  auto const* const uuid = dictionary["uuid"].as_string();
  if (uuid == nullptr || uuid->empty()) {
    platform::log_once(path + ": no uuid");
    return std::nullopt;
  }
  complain_of_types(dictionary, kind, path);
  BundleItemStub stub;
  if (dictionary["isDelta"].integer_or(0) != 0) {
    stub.keys.uuid = *uuid;
    stub.more = relevant_changes(dictionary, kind);
  } else {
    stub.keys = keys_from(dictionary);
    if (kind == item_kind::language) stub.more = language_entries(dictionary);
  }
  stub.path = std::move(path);
  return stub;
}

}  // namespace bundles
