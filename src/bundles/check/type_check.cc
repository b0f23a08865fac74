#include "bundles/check/type_check.h"

#include <algorithm>

#include "platform/log.h"

namespace bundles {
namespace {

using enum content_type;

key_types const menu_keys = {{"items", texts}, {"excludedItems", texts}, {"submenus", groups}};
key_types const group_keys = {{"name", text}, {"items", texts}};
// What is read of a grammar beside its rules.
key_types const language_file_keys = {{"fileTypes", texts},
                                      {"firstLineMatch", pattern},
                                      {"firstLineMatchLast", pattern},
                                      {"foldingStartMarker", pattern},
                                      {"foldingStopMarker", pattern}};

/// Where a value stands. Made into words only when there is something to tell.
struct place {
  way const* start = nullptr;    // of the outermost
  place const* outer = nullptr;  // of all others
  std::string_view key;
  std::size_t index = 0;  // where there is no key

  way path() const {
    if (outer == nullptr) return *start;
    way result = outer->path();
    result.push_back(key.data() != nullptr ? std::string(key) : std::to_string(index));
    return result;
  }
  place below(std::string_view k) const { return {nullptr, this, k, 0}; }
  place below(std::size_t n) const { return {nullptr, this, {}, n}; }
};

bool is_text(plist::value const& v) {
  return v.as_string() != nullptr;
}

bool is_color(std::string const& text) {
  return (text.size() == 7 || text.size() == 9) && text.front() == '#' &&
         text.find_first_not_of("0123456789ABCDEFabcdef", 1) == text.npos;
}

char const* fault_of(plist::value const& v, content_type type) {
  switch (type) {
    case list:
    case texts:
    case pairs:
    case programs:
    case variables:
      return v.as_array() ? nullptr : "is not an array";
    case table:
    case captures:
    case menu:
    case groups:
      return v.as_dictionary() ? nullptr : "is not a dictionary";
    case number:
      return v.integer_or(0) == v.integer_or(1) ? nullptr : "is no number";
    case color:
      if (!is_text(v)) return "is not a string";
      return is_color(*v.as_string()) ? nullptr : "is no colour such as #RRGGBB";
    default:
      return is_text(v) ? nullptr : "is not a string";
  }
}

bool check_value(plist::value const& v, place const& to, content_type type,
                 fault_teller const& tell);

void check_entries(plist::value const& table, place const& to, key_types const& known,
                   fault_teller const& tell) {
  for (auto const& [key, v] : table.entries())
    if (auto const type = known.find(key); type != known.end())
      check_value(v, to.below(key), type->second, tell);
}

void check_element(plist::value const& part, place const& to, content_type type,
                   fault_teller const& tell) {
  auto const& pair = part.elements();
  if (type == texts && !is_text(part)) tell(to.path(), "is not a string");
  if (type == pairs && (pair.size() != 2 || !std::all_of(pair.begin(), pair.end(), is_text)))
    tell(to.path(), "is not a pair of strings");
  if (type == programs && !is_text(part) && !is_text(part["command"]))
    tell(to.path(), "is no name of a program");
  if (type == variables && (!is_text(part["name"]) || !is_text(part["value"])))
    tell(to.path(), "is no name with a value");
}

void check_entry(std::string const& key, plist::value const& part, place const& to,
                 content_type type, fault_teller const& tell) {
  if (type == groups && check_value(part, to, table, tell))
    check_entries(part, to, group_keys, tell);
  if (type != captures) return;
  bool const is_group = !key.empty() && key.find_first_not_of("0123456789") == key.npos;
  if (!is_group) tell(to.path(), "is no group");
  if (!is_text(part["name"])) tell(to.path(), "has no name");
}

bool check_value(plist::value const& v, place const& to, content_type type,
                 fault_teller const& tell) {
  if (char const* const fault = fault_of(v, type)) {
    tell(to.path(), fault);
    return false;
  }
  std::size_t n = 0;
  for (plist::value const& part : v.elements()) check_element(part, to.below(n++), type, tell);
  for (auto const& [key, part] : v.entries()) check_entry(key, part, to.below(key), type, tell);
  if (type == menu) check_entries(v, to, menu_keys, tell);
  return true;
}

void check_theme_rules(plist::value const& rules, place const& to, fault_teller const& tell) {
  std::size_t n = 0;
  for (plist::value const& rule : rules.elements()) {
    place const here = to.below(n++);
    if (!check_value(rule, here, table, tell)) continue;
    check_entries(rule, here, theme_rule_keys(), tell);
    check_entries(rule["settings"], here.below("settings"), setting_keys(), tell);
  }
}

// `content` is the whole of a file, or what a delta changes, which has dots between steps.
void check_content(plist::value const& content, place const& to, item_kind kind,
                   fault_teller const& tell) {
  check_entries(content, to, keys_of_kind(kind), tell);
  if (kind == item_kind::language) check_entries(content, to, language_file_keys, tell);
  if (kind != item_kind::preference) return;
  check_entries(content["settings"], to.below("settings"), setting_keys(), tell);
  constexpr std::string_view settings = "settings.";
  for (auto const& [key, v] : content.entries()) {
    if (!key.starts_with(settings)) continue;
    auto const type = setting_keys().find(std::string_view(key).substr(settings.size()));
    if (type != setting_keys().end()) check_value(v, to.below(key), type->second, tell);
  }
}

void check_theme(plist::value const& content, place const& to, fault_teller const& tell) {
  check_entries(content, to, theme_keys(), tell);
  check_theme_rules(content["settings"], to.below("settings"), tell);
}

// `check` is given the content of a file, or what a delta changes.
template <typename Check>
void check_file(plist::value const& content, fault_teller const& tell, Check check) {
  way const start;
  place const top{&start, nullptr, {}, 0};
  plist::value const& is_delta = content["isDelta"];
  if (is_delta) check_value(is_delta, top.below("isDelta"), number, tell);
  if (is_delta.integer_or(0) == 0) return check(content, top);
  place const changed = top.below("changed"), deleted = top.below("deleted");
  if (content["deleted"]) check_value(content["deleted"], deleted, texts, tell);
  if (content["changed"] && check_value(content["changed"], changed, table, tell))
    check(content["changed"], changed);
}

fault_teller complaints_about(std::string const& file) {
  return [&file](way const& to, std::string const& reason) {
    std::string key;
    for (std::string const& step : to) key += (key.empty() ? "" : ".") + step;
    platform::log_once(file + ": " + key + ": " + reason);
  };
}

}  // namespace

bool check_type(plist::value const& v, way const& to, content_type type, fault_teller const& tell) {
  return check_value(v, {&to, nullptr, {}, 0}, type, tell);
}

void check_types(plist::value const& content, item_kind kind, fault_teller const& tell) {
  check_file(content, tell, [&](plist::value const& checked, place const& at) {
    check_content(checked, at, kind, tell);
  });
}

void complain_of_types(plist::value const& content, item_kind kind, std::string const& file) {
  check_types(content, kind, complaints_about(file));
}

void complain_of_theme_types(plist::value const& content, std::string const& file) {
  fault_teller const tell = complaints_about(file);
  check_file(content, tell,
             [&](plist::value const& checked, place const& at) { check_theme(checked, at, tell); });
}

}  // namespace bundles
