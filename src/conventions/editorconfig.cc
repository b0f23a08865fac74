#include "conventions/editorconfig.h"

#include <algorithm>
#include <array>
#include <optional>

#include "conventions/editorconfig_glob.h"
#include "path/file_reader.h"

namespace conventions {
namespace {

using std::string_view;

constexpr std::size_t longest_name = 1024, longest_value = 4096, longest_heading = 4096;
constexpr std::array<string_view, 8> known = {
    "indent_style",         "indent_size", "tab_width",
    "end_of_line",          "charset",     "trim_trailing_whitespace",
    "insert_final_newline", "root"};

string_view trimmed(string_view text) {
  constexpr string_view blanks = " \t\r\f\v";
  std::size_t const first = std::min(text.find_first_not_of(blanks), text.size());
  text.remove_prefix(first);
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string lower(string_view text) {
  std::string result(text);
  for (char& c : result)
    if ('A' <= c && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return result;
}

std::optional<std::string> contents(std::string const& path) {
  path::file_reader reader;
  if (reader.open(path)) return std::nullopt;
  std::string result(largest_editorconfig + 1, '\0');
  auto const [bytes, error] = reader.read(result.data(), result.size());
  if (error || bytes > largest_editorconfig) return std::nullopt;
  result.resize(bytes);
  return result;
}

void add_implied(properties& found) {
  auto const value = [&](char const* name) {
    auto const at = found.find(name);
    return at == found.end() ? std::string() : at->second;
  };
  if (value("indent_style") == "tab" && value("indent_size").empty()) found["indent_size"] = "tab";
  if (value("indent_size") == "tab" && !value("tab_width").empty())
    found["indent_size"] = value("tab_width");
  else if (value("tab_width").empty() && !value("indent_size").empty() &&
           value("indent_size") != "tab")
    found["tab_width"] = value("indent_size");
}

}  // namespace

properties editorconfig_file::properties_for(string_view path) const {
  properties result;
  for (section const& each : sections)
    if (!each.lines.empty() && editorconfig_glob_matches(each.glob, path))
      for (auto const& [name, value] : each.lines) result.insert_or_assign(name, value);
  return result;
}

editorconfig_file parse_editorconfig(string_view text) {
  editorconfig_file result;
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  bool is_preamble = true, is_skipped = false;
  while (!text.empty()) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    string_view const line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line.front() == '[' && line.back() == ']' && line.size() > 1) {
      is_preamble = false;
      string_view const glob = line.substr(1, line.size() - 2);
      is_skipped = glob.empty() || glob.size() > longest_heading;
      if (!is_skipped) result.sections.push_back({std::string(glob), {}});
      continue;
    }
    std::size_t const equals = line.find('=');
    if (equals == line.npos || is_skipped) continue;
    std::string name = lower(trimmed(line.substr(0, equals)));
    string_view const given = trimmed(line.substr(equals + 1));
    if (name.empty() || name.size() > longest_name || given.size() > longest_value) continue;
    bool const is_known = std::count(known.begin(), known.end(), name) != 0;
    std::string value = is_known ? lower(given) : std::string(given);
    if (!is_preamble)
      result.sections.back().lines.emplace_back(std::move(name), std::move(value));
    else if (name == "root")
      result.is_root = value == "true";
  }
  return result;
}

properties editorconfig_properties(std::string const& path) {
  properties result;
  if (!path.starts_with('/')) return result;
  for (std::size_t end = path.rfind('/'); end != path.npos;
       end = end == 0 ? path.npos : path.rfind('/', end - 1)) {
    auto const text = contents(path.substr(0, end) + "/.editorconfig");
    if (!text) continue;
    auto const file = parse_editorconfig(*text);
    // What is there already comes from a nearer folder.
    result.merge(file.properties_for(string_view(path).substr(end + 1)));
    if (file.is_root) break;
  }
  std::erase_if(result, [](auto const& each) { return lower(each.second) == "unset"; });
  add_implied(result);
  return result;
}

}  // namespace conventions
