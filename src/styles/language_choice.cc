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
  return pattern != nullptr && regex::isEqualToRegEx(first_line, *pattern);
}

/// A pattern of the user's that is none matches everything; a grammar's must not take all files.
std::string by_first_line(std::string_view first_line, plist::array const& languages,
                          std::string const& key) {
  for (plist::value const& language : languages) {
    std::string const pattern = language[key].string_or("");
    std::string fault;
    bool const is_pattern = regex::isRegEx(pattern, fault);
    if (!fault.empty())
      platform::log_once(language["item"].string_or("") + ": " + key + ": " + fault);
    if (is_pattern && language[key] && regex::isEqualToRegEx(first_line, pattern))
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

/// The length of the end of a path that is of a file type, 0 if none is.
std::size_t length_at_end(std::string_view path, std::string_view type) {
  std::size_t const star = std::min(type.find('*'), type.size());
  std::string_view const first = type.substr(0, star);
  std::string_view const last = type.substr(std::min(star + 1, type.size()));
  if (path.size() < first.size() + last.size() || !path.ends_with(last)) return 0;
  std::size_t const rest = path.size() - last.size();
  std::size_t const name = star < type.size() ? path.rfind('/', rest - 1) + 1 : rest;
  std::size_t at = name > first.size() ? std::min(name, rest) - first.size() : 0;
  for (; (at = path.find(first, at)) <= rest - first.size(); ++at)
    if (at == 0 || std::string_view("./_").find(path[at - 1]) != std::string_view::npos)
      return path.size() - at;
  return 0;
}

}  // namespace

std::size_t longest_suffix(std::string_view path, plist::value const& file_types) {
  std::size_t longest = 0;
  for (plist::value const& type : file_types.elements())
    if (auto const* const word = type.as_string(); word != nullptr && !word->empty())
      longest = std::max(longest, length_at_end(path, *word));
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
