#include "platform/system/links.h"

#include <limits.h>
#include <unistd.h>

#include <cerrno>

#include "platform/system/replace_file.h"

namespace platform {

std::optional<std::string> target_of_link(std::string const& name, int folder) {
  std::string target(PATH_MAX, '\0');
  ssize_t const size = ::readlinkat(folder, name.c_str(), target.data(), target.size());
  if (size < 0) return std::nullopt;
  errno = ENAMETOOLONG;
  if (static_cast<std::size_t>(size) == target.size()) return std::nullopt;
  target.resize(static_cast<std::size_t>(size));
  return target;
}

std::vector<std::string> chain_of_links(std::string const& path) {
  std::vector<std::string> result = {path};
  for (int links = 0; links < most_links; ++links) {
    std::string const& link = result.back();
    auto const target = target_of_link(link);
    if (!target || target->empty()) break;
    std::string next = target->starts_with('/') ? *target : folder_of(link) + "/" + *target;
    if (next.size() >= PATH_MAX) break;
    result.push_back(std::move(next));
  }
  return result;
}

}  // namespace platform
