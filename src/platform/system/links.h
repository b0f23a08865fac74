#pragma once

#include <fcntl.h>

#include <optional>
#include <string>
#include <vector>

/// Symbolic links, as the kernel follows them.
namespace platform {

/// The most that are followed on one way, as by the kernel.
constexpr int most_links = 40;

/// What the link of that name in the open folder holds; without a folder the name is a path.
/// Nothing, with errno, if there is no link: EINVAL if something else stands there.
std::optional<std::string> target_of_link(std::string const& name, int folder = AT_FDCWD);

/// The path itself, then what each link leads to, last what isn't a link or not there; past
/// `most_links` the last one that was followed. Links in folders of the path aren't looked at.
std::vector<std::string> chain_of_links(std::string const& path);

}  // namespace platform
