#include "projects/text_files.h"

#include "path/file_reader.h"
#include "path/file_version.h"
#include "path/path.h"
#include "settings/store.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <unordered_map>

namespace projects {
namespace {

constexpr char const* text_key = "WynProjectTextFiles";
constexpr char const* binary_key = "WynProjectBinaryFiles";

std::string lower_case(std::string_view text) {
  std::string result(text);
  for (char& c : result)
    if ('A' <= c && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

std::set<std::string, std::less<>> extensions_in(char const* key) {
  std::set<std::string, std::less<>> result;
  for (plist::value const& extension : settings::store().array(key))
    result.insert(lower_case(extension.string_or("")));
  result.erase("");
  return result;
}

void change_list(char const* key, std::string const& extension, bool add) {
  plist::array list = settings::store().array(key);
  std::erase_if(list,
                [&](auto const& other) { return lower_case(other.string_or("")) == extension; });
  if (add) list.emplace_back(extension);
  settings::store().set(key, list);
}

text_file_rules with_present_lists(text_file_rules rules) {
  return text_file_rules::standard(std::move(rules.languages));
}

bool holds_text(std::string const& path) {
  path::file_reader reader;
  if (reader.open(path)) return true;  // whoever opens it is told why it can't be read
  std::array<char, text_head> head;
  return looks_like_text({head.data(), reader.read(head.data(), head.size()).bytes});
}

}  // namespace

text_file_rules text_file_rules::standard(std::set<std::string, std::less<>> languages) {
  return {extensions_in(text_key), extensions_in(binary_key), std::move(languages)};
}

std::optional<bool> text_file_rules::is_text(std::string_view path) const {
  std::string const extension = extension_of(path);
  if (extension.empty()) return std::nullopt;
  if (text.contains(extension)) return true;
  if (binary.contains(extension)) return false;
  return languages.contains(extension) ? std::optional(true) : std::nullopt;
}

std::string extension_of(std::string_view path) {
  std::string_view const name = path.substr(path.rfind('/') + 1);
  std::size_t const dot = name.rfind('.');
  return dot == name.npos || dot == 0 ? "" : lower_case(name.substr(dot + 1));
}

bool looks_like_text(std::string_view head) {
  int to_come = 0;
  for (char const c : head) {
    auto const byte = static_cast<unsigned char>(c);
    if (to_come > 0) {
      if ((byte & 0xC0) != 0x80) return false;
      --to_come;
    } else if (byte >= 0x80) {
      int const ones = std::countl_one(byte);
      if (ones < 2 || ones > 6) return false;
      to_come = ones - 1;
    } else if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') {
      return false;
    }
  }
  return to_come == 0 || head.size() >= text_head;
}

bool can_open_file(std::string const& path, text_file_rules const& rules) {
  struct known {
    path::file_version version;
    bool is_text;
  };
  static std::unordered_map<std::string, known> all;
  if (path.empty()) return false;
  if (auto const answer = rules.is_text(path)) return *answer;
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  auto const version = path::version_of(info);
  auto const it = all.find(path);
  if (it != all.end() && it->second.version == version) return it->second.is_text;
  return all.insert_or_assign(path, known{version, holds_text(path)}).first->second.is_text;
}

void toggle_treated_as_text(std::string const& path, text_file_rules const& rules) {
  std::string const extension = extension_of(path);
  if (extension.empty()) return;
  bool const opens = can_open_file(path, with_present_lists(rules));
  change_list(opens ? text_key : binary_key, extension, false);
  if (can_open_file(path, with_present_lists(rules)) == opens)
    change_list(opens ? binary_key : text_key, extension, true);
}

void learn_to_open(std::string const& path, text_file_rules const& rules) {
  std::string const extension = extension_of(path);
  if (extension.empty() || can_open_file(path, with_present_lists(rules))) return;
  change_list(binary_key, extension, false);
  if (!can_open_file(path, with_present_lists(rules))) change_list(text_key, extension, true);
}

}  // namespace projects
