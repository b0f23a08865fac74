#include "windows/project_variables.h"

#include "plist/text_reader.h"
#include "plist/text_writer.h"

#include <algorithm>

namespace windows {
namespace {

bool is_enabled(plist::value const& variable) {
  return variable["enabled"].boolean_or(false) && !variable["variable"].string_or("").empty();
}

bool is_name(std::string const& name) {
  return !name.empty() && (name[0] < '0' || name[0] > '9') &&
         std::all_of(name.begin(), name.end(), [](char c) {
           return c == '_' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
                  (c >= 'A' && c <= 'Z');
         });
}

}  // namespace

std::string shown_variables(plist::array const& variables) {
  std::string text = "{";
  for (plist::value const& variable : variables)
    if (is_enabled(variable))
      text += " " + plist::PrettyPrintKey(variable["variable"].string_or("")) + " = " +
              plist::PrettyPrintString(variable["value"].string_or("")) + ";";
  return text + " }";
}

std::optional<plist::array> edited_variables(std::string_view text, plist::array const& variables) {
  plist::value const read = plist::convert(text);
  auto const* const wanted = read.as_dictionary();
  if (wanted == nullptr) return std::nullopt;
  plist::array result;
  plist::dictionary rest = *wanted;
  for (auto& [name, value] : rest) {
    if (value.kind() == plist::kind::integer) value = value.string_or("");
    if (!is_name(name) || value.as_string() == nullptr) return std::nullopt;
  }
  auto const add = [&](std::string const& name, plist::value const& value) {
    result.push_back(plist::dictionary{{"variable", name}, {"value", value}, {"enabled", true}});
  };
  // Those that were there keep their places.
  for (plist::value const& variable : variables) {
    if (!is_enabled(variable)) {
      result.push_back(variable);
      continue;
    }
    auto const found = rest.find(variable["variable"].string_or(""));
    if (found == rest.end()) continue;
    add(found->first, found->second);
    rest.erase(found);
  }
  for (auto const& [name, value] : rest) add(name, value);
  return result;
}

}  // namespace windows
