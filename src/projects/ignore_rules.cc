#include "projects/ignore_rules.h"

#include "path/file_system.h"
#include "path/path.h"

#include <algorithm>
#include <optional>

namespace projects {
namespace {

constexpr std::size_t most_bytes = std::size_t{1} << 20;  // of one file; the rest is left out

// The set that begins at pattern[at], which is "[": whether it holds `c`, and where it ends.
// Nothing if it never closes, when the bracket is a plain one.
std::optional<bool> set_holds(std::string_view pattern, std::size_t& at, unsigned char c) {
  std::size_t p = at + 1;
  bool const negated = p < pattern.size() && (pattern[p] == '!' || pattern[p] == '^');
  if (negated) ++p;
  bool found = false;
  for (bool first = true; p < pattern.size() && (first || pattern[p] != ']'); first = false) {
    auto const take = [&] {
      if (pattern[p] == '\\' && p + 1 < pattern.size()) ++p;
      return static_cast<unsigned char>(pattern[p++]);
    };
    unsigned char const low = take();
    unsigned char high = low;
    if (p + 1 < pattern.size() && pattern[p] == '-' && pattern[p + 1] != ']') {
      ++p;
      high = take();
    }
    found = found || (low <= c && c <= high);
  }
  if (p >= pattern.size()) return std::nullopt;
  at = p + 1;
  return found != negated;
}

// Goes back to the last star only, which is enough.
bool matches_name(std::string_view pattern, std::string_view name) {
  std::size_t p = 0, n = 0, star = pattern.npos, from = 0;
  while (n < name.size()) {
    std::size_t next = p;
    bool fits = false;
    if (p < pattern.size()) {
      if (pattern[p] == '*') {
        star = p++;
        from = n;
        continue;
      }
      auto const set = pattern[p] == '['
                           ? set_holds(pattern, next, static_cast<unsigned char>(name[n]))
                           : std::nullopt;
      if (set) {
        fits = *set;
      } else {
        bool const escaped = pattern[p] == '\\' && p + 1 < pattern.size();
        fits = (pattern[p] == '?' && !escaped) || pattern[p + escaped] == name[n];
        next = p + 1 + escaped;
      }
    }
    if (fits) {
      p = next;
      ++n;
    } else if (star != pattern.npos) {
      p = star + 1;
      n = ++from;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::vector<std::string_view> components_of(std::string_view path) {
  std::vector<std::string_view> result;
  while (!path.empty()) {
    std::size_t const slash = std::min(path.find('/'), path.size());
    result.push_back(path.substr(0, slash));
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return result;
}

// The same with "**" for any number of components.
bool matches_path(std::vector<std::string> const& pattern,
                  std::vector<std::string_view> const& path) {
  std::size_t p = 0, n = 0, star = pattern.size(), from = 0;
  while (n < path.size()) {
    if (p < pattern.size() && pattern[p] == "**") {
      star = p++;
      from = n;
      // At the end of a pattern it stands for what is in a folder, not for the folder.
      if (p == pattern.size()) return true;
    } else if (p < pattern.size() && matches_name(pattern[p], path[n])) {
      ++p;
      ++n;
    } else if (star != pattern.size()) {
      p = star + 1;
      n = ++from;
    } else {
      return false;
    }
  }
  return p == pattern.size();
}

}  // namespace

ignore_rules::ignore_rules(std::string_view text) {
  text = text.substr(0, most_bytes);
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  while (!text.empty()) {
    std::size_t const end = std::min(text.find('\n'), text.size());
    add(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void ignore_rules::add(std::string_view line) {
  if (line.ends_with('\r')) line.remove_suffix(1);
  while (line.ends_with(' ') && !line.ends_with("\\ ")) line.remove_suffix(1);
  if (line.empty() || line.front() == '#') return;
  size_ += line.size();
  rule added;
  if (line.front() == '!') {
    added.negated = true;
    line.remove_prefix(1);
  }
  if (line.ends_with('/')) {
    added.folders_only = true;
    line.remove_suffix(1);
  }
  if (line.empty()) return;
  bool const is_anchored = line.find('/') != line.npos;
  if (line.front() == '/') line.remove_prefix(1);
  if (!is_anchored) added.components.emplace_back("**");
  for (std::string_view const component : components_of(line)) {
    bool const repeats =
        component == "**" && !added.components.empty() && added.components.back() == component;
    if (!repeats) added.components.emplace_back(component);
  }
  rules_.push_back(std::move(added));
}

ignore_rules::verdict ignore_rules::of(std::string_view path, bool is_folder) const {
  auto const components = components_of(path);
  auto const found = std::find_if(rules_.rbegin(), rules_.rend(), [&](rule const& r) {
    return (is_folder || !r.folders_only) && matches_path(r.components, components);
  });
  if (found == rules_.rend()) return verdict::none;
  return found->negated ? verdict::taken_in : verdict::ignored;
}

ignore_stack::ignore_stack(std::string const& folder) {
  std::vector<std::string> above;
  bool in_repository = path::exists(path::join(folder, ".git"));
  if (in_repository) {
    levels_.push_back(
        {folder.size() + 1, ignore_rules(path::content(path::join(folder, ".git/info/exclude")))});
    return;
  }
  for (std::string at = folder; at != "/" && !at.empty() && !in_repository;) {
    at = path::parent(at);
    above.push_back(at);
    in_repository = path::exists(path::join(at, ".git"));
  }
  if (!in_repository) return;
  std::string const& top = above.back();
  levels_.push_back({top == "/" ? 1 : top.size() + 1,
                     ignore_rules(path::content(path::join(top, ".git/info/exclude")))});
  for (auto at = above.rbegin(); at != above.rend(); ++at) enter(*at);
}

std::size_t ignore_stack::size() const {
  std::size_t size = 0;
  for (level const& each : levels_) size += each.rules.size();
  return size;
}

void ignore_stack::enter(std::string const& folder) {
  std::string const file = path::join(folder, ".gitignore");
  levels_.push_back({folder == "/" ? 1 : folder.size() + 1, ignore_rules(path::content(file))});
}

bool ignore_stack::is_ignored(std::string const& path, bool is_folder) const {
  using verdict = ignore_rules::verdict;
  for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) {
    if (level->rules.empty()) continue;
    auto const found = level->rules.of(std::string_view(path).substr(level->prefix), is_folder);
    if (found != verdict::none) return found == verdict::ignored;
  }
  return false;
}

}  // namespace projects
