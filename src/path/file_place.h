#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

#include "path/file_error.h"
#include "path/file_system_calls.h"

namespace path {

/// Where a path leads: paths in which no folder is a link.
struct file_place {
  std::string entry;   ///< of what stands under the name, which may be a link
  std::string target;  ///< of what it leads to; the same if it is no link

  /// Whether a path that led to `before` and leads here now does so through no new link. Nothing
  /// leads to a place that is not known.
  bool is_reached_as(file_place const& before) const {
    return !target.empty() &&
           (target == before.target || (target == entry && entry == before.entry));
  }
};

/// A place whose folder is held open. What is done with the name there stays in that folder,
/// whatever others do to the path meanwhile, and follows no link.
///
///     path::open_place place(calls);
///     if (auto error = place.open(path)) return error;
///     int const fd = calls.openat(place.folder(), place.name(), O_WRONLY | O_NOFOLLOW, 0);
class open_place {
 public:
  explicit open_place(file_system_calls& calls = file_system_calls::system())
      : calls_(&calls), folder_(calls) {}

  /// Follows the links that are there now, 40 at most. There need be no file of that name.
  std::optional<file_error> open(std::string const& path);

  int folder() const { return folder_.get(); }
  char const* name() const { return name_.c_str(); }
  file_place const& place() const { return place_; }

  /// What stands there now, a link as such. Nothing, with errno, if nothing does.
  std::optional<struct stat> info() const;
  /// Makes sure that the folder's entries are on the disk, where the folder may be read.
  std::optional<file_error> sync() const;

 private:
  file_error error(char const* operation) const;
  bool enter(std::string const& folder);
  std::string real_path() const;
  bool may_follow() const;

  file_system_calls* calls_;
  file_descriptor folder_;
  std::string name_;
  file_place place_;
  std::string path_;
};

/// Where the path leads now; nothing if that can't be found out.
std::optional<file_place> place_of(std::string const& path);

}  // namespace path
