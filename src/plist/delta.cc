#include "plist/delta.h"

#include <optional>
#include <string_view>

namespace plist {
namespace {

std::string joined(std::vector<std::string> const& path, std::string const& key) {
  std::string result;
  for (std::string const& step : path) result += step + ".";
  return result + key;
}

/// Sets or, with nothing, removes what stands at the path.
void set_at_path(dictionary& entries, std::string_view path, value const& v) {
  auto const dot = path.find('.');
  std::string const key(path.substr(0, dot));
  if (dot == std::string_view::npos) {
    entries.erase(key);
    if (v) entries.emplace(key, v);
    return;
  }
  auto const found = entries.find(key);
  if (found == entries.end() || !found->second.as_dictionary()) return;
  dictionary inner = found->second.entries();
  set_at_path(inner, path.substr(dot + 1), v);
  found->second = std::move(inner);
}

void apply(value const& delta, dictionary& to) {
  for (value const& path : delta["deleted"].elements())
    if (auto const* text = path.as_string()) set_at_path(to, *text, {});
  for (auto const& [path, v] : delta["changed"].entries()) set_at_path(to, path, v);
}

}  // namespace

void DeltaPListHelper(dictionary const& oldDictionary, dictionary const& newDictionary,
                      dictionary& changed, array& deleted, std::vector<std::string> const& path) {
  for (auto const& [key, v] : oldDictionary)
    if (!newDictionary.contains(key)) deleted.push_back(joined(path, key));
  for (auto const& [key, now] : newDictionary) {
    auto const before = oldDictionary.find(key);
    bool const existed = before != oldDictionary.end();
    if (existed && before->second.as_dictionary() && now.as_dictionary()) {
      auto inner_path = path;
      inner_path.push_back(key);
      DeltaPListHelper(before->second.entries(), now.entries(), changed, deleted, inner_path);
    } else if (!existed || !(before->second == now)) {
      changed.insert_or_assign(joined(path, key), now);
    }
  }
}

dictionary DeltaPList(dictionary const& oldDictionary, dictionary const& newDictionary) {
  dictionary changed;
  array deleted;
  DeltaPListHelper(oldDictionary, newDictionary, changed, deleted, {});
  dictionary result = {
      {"isDelta", true}, {"changed", std::move(changed)}, {"deleted", std::move(deleted)}};
  auto const uuid = oldDictionary.find("uuid");
  if (uuid != oldDictionary.end()) result.insert(*uuid);
  return result;
}

value MergePLists(array const& layers) {
  dictionary result;
  bool found_base = false;
  for (auto layer = layers.rbegin(); layer != layers.rend(); ++layer) {
    if ((*layer)["isDelta"].integer_or(0) != 0) {
      apply(*layer, result);
    } else if (layer->as_dictionary()) {
      result = layer->entries();
      found_base = true;
    }
  }
  return found_base ? value(std::move(result)) : value();
}

value mutableDeepCopy(value const& v) {
  if (auto const* elements = v.as_array()) {
    array copy;
    copy.reserve(elements->size());
    for (value const& element : *elements) copy.push_back(mutableDeepCopy(element));
    return copy;
  }
  if (auto const* entries = v.as_dictionary()) {
    dictionary copy;
    for (auto const& [key, content] : *entries) copy.emplace(key, mutableDeepCopy(content));
    return copy;
  }
  return v;
}

}  // namespace plist
