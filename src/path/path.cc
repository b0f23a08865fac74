#include "path/path.h"

#include "platform/system/percent_encoding.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace path {
namespace {

/// Drops "./" and doubled "/" in one pass; `a` and `b` are the two characters read before `c`.
std::string without_idle_parts(std::string path) {
  std::size_t kept = 0;
  char a = '/', b = '/';
  bool first = true;
  for (char c : path) {
    if (c == '/' && b == '.' && a == '/')
      --kept;
    else if (c != '/' || b != '/' || first)
      path[kept++] = c;
    a = std::exchange(b, c);
    first = false;
  }
  std::size_t final_length = 0;
  if (b == '/' && kept >= 2) final_length = 1;
  if (b == '.' && a == '/' && path.size() >= 2) final_length = std::min<std::size_t>(kept, 2);
  path.resize(kept - final_length);
  return path;
}

std::vector<std::string_view> split(std::string_view path) {
  std::vector<std::string_view> components;
  for (std::size_t begin = 0;;) {
    std::size_t const end = path.find('/', begin);
    components.push_back(path.substr(begin, end - begin));
    if (end == path.npos) return components;
    begin = end + 1;
  }
}

}  // namespace

std::string normalize(std::string path) {
  path = without_idle_parts(std::move(path));
  remove_parent_dir(path);
  return path;
}

void remove_parent_dir(std::string& path) {
  std::string_view const root = path.starts_with('/') ? "/" : "";
  std::vector<std::string_view> const components =
      split(std::string_view(path).substr(root.size()));
  std::vector<std::string_view> kept;  // the end of the path comes first
  std::size_t parents = 0;
  for (auto it = components.rbegin(); it != components.rend(); ++it) {
    if (*it == "..")
      ++parents;
    else if (parents)
      --parents;
    else
      kept.push_back(*it);
  }
  kept.insert(kept.end(), parents, "..");
  std::string result;
  for (auto it = kept.rbegin(); it != kept.rend(); ++it) result.append(*it).append("/");
  // One "/" was appended too many, and a final one that the path had goes too.
  for (int i = 0; i < 2 && result.ends_with('/'); ++i) result.pop_back();
  path = std::string(root) + result;
}

std::string join(std::string_view dir, std::string_view name) {
  if (name.starts_with('/')) return normalize(std::string(name));
  return normalize(std::string(dir).append("/").append(name));
}

std::string parent(std::string const& path) {
  return path.empty() || path == "/" ? path : join(path, "..");
}

std::string name(std::string const& path) {
  std::string normal = normalize(path);
  return normal.substr(normal.rfind('/') + 1);
}

std::string file_url(std::string_view path) {
  return "file://" + platform::percent_encoded(path, "/-._~!$&'()*+,;=:@");
}

}  // namespace path
