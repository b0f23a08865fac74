#include "styles/language_choice.h"

#include <algorithm>
#include <vector>

#include "path/path.h"
#include "platform/log.h"
#include "regex/WynRegEx.h"

namespace language_choice {
namespace {

bool matches_first_line(plist::value const& entry, std::string_view first_line) {
  auto const* const pattern = entry["firstLineMatch"].as_string();
  return pattern != nullptr && isEqualToRegEx(first_line, *pattern);
}

/// A pattern of the user's that is none matches everything; a grammar's must not take all files.
std::string by_first_line(std::string_view first_line, plist::array const& languages,
                          std::string const& key) {
  for (plist::value const& language : languages) {
    std::string const pattern = language[key].string_or("");
    std::string fault;
    bool const is_pattern = isRegEx(pattern, fault);
    if (!fault.empty())
      platform::log_once(language["item"].string_or("") + ": " + key + ": " + fault);
    if (is_pattern && language[key] && isEqualToRegEx(first_line, pattern))
      return language["uuid"].string_or("");
  }
  return "";
}

/// The value under `uuid_key` of the entry with the longest suffix; the first of several.
std::string by_file_type(std::string_view path, std::vector<plist::value> const& entries,
                         std::string_view uuid_key) {
  std::size_t longest = 0;
  std::string result;
  for (plist::value const& entry : entries) {
    std::size_t const length = longest_suffix(path, entry["fileTypes"]);
    if (length <= longest) continue;
    longest = length;
    result = entry[uuid_key].string_or("");
  }
  return result;
}

}  // namespace

std::size_t longest_suffix(std::string_view path, plist::value const& file_types) {
  std::size_t longest = 0;
  for (plist::value const& type : file_types.elements()) {
    auto const* const word = type.as_string();
    if (word == nullptr || word->size() <= longest || !path.ends_with(*word)) continue;
    std::string_view const before = path.substr(0, path.size() - word->size());
    if (before.empty() || std::string_view("./_").find(before.back()) != std::string_view::npos)
      longest = word->size();
  }
  return longest;
}

std::string for_file(std::string_view path, std::string_view first_line,
                     plist::array const& languages, plist::array const& bindings,
                     std::string const& default_language) {
  auto const is_known = [&](std::string const& uuid) {
    return std::any_of(languages.begin(), languages.end(), [&](plist::value const& language) {
      return language["uuid"].string_or("") == uuid;
    });
  };
  std::vector<plist::value> known;
  for (plist::value const& binding : bindings)
    if (is_known(binding["language"].string_or(""))) known.push_back(binding);

  for (plist::value const& binding : known)
    if (matches_first_line(binding, first_line)) return binding["language"].string_or("");
  if (auto uuid = by_file_type(path, known, "language"); !uuid.empty()) return uuid;
  if (auto uuid = by_first_line(first_line, languages, "firstLineMatch"); !uuid.empty())
    return uuid;
  if (auto uuid = by_file_type(path, languages, "uuid"); !uuid.empty()) return uuid;
  if (auto uuid = by_first_line(first_line, languages, "firstLineMatchLast"); !uuid.empty())
    return uuid;
  return is_known(default_language) ? default_language : "";
}

std::string word_to_learn(std::string const& path) {
  std::string const name = path::name(path);
  std::size_t const dot = name.rfind('.');
  return dot == std::string::npos || dot == 0 || dot + 1 == name.size() ? name
                                                                        : name.substr(dot + 1);
}

plist::array without_word(plist::array const& bindings, std::string const& word) {
  plist::array result;
  for (plist::value const& binding : bindings) {
    plist::array file_types = binding["fileTypes"].elements();
    std::erase(file_types, plist::value(word));
    if (file_types.empty() && !binding["firstLineMatch"]) continue;
    plist::dictionary rest = binding.entries();
    rest.insert_or_assign("fileTypes", std::move(file_types));
    result.emplace_back(std::move(rest));
  }
  return result;
}

plist::array with_word(plist::array bindings, std::string const& word, std::string const& language,
                       std::string const& name) {
  auto const found = std::find_if(bindings.begin(), bindings.end(), [&](plist::value const& b) {
    return b["language"].string_or("") == language;
  });
  plist::dictionary binding{{"language", language}, {"name", name}};
  plist::array file_types;
  if (found != bindings.end()) {
    binding = found->entries();
    file_types = (*found)["fileTypes"].elements();
  }
  file_types.emplace_back(word);
  binding.insert_or_assign("fileTypes", std::move(file_types));
  if (found != bindings.end())
    *found = std::move(binding);
  else
    bindings.emplace_back(std::move(binding));
  return bindings;
}

}  // namespace language_choice
