#pragma once

#include <optional>
#include <string>

#include "path/file_place.h"
#include "path/file_writer.h"

namespace path {

/// The file that is to be written, as both ways of writing look at it.
class write_target {
 public:
  write_target(std::string const& path, write_options const& options, file_system_calls& calls)
      : path_(path), options_(options), calls_(calls), place_(calls) {}

  /// Finds out where the path leads and what stands there.
  std::optional<write_error> find();
  /// Why a file that was found isn't to be overwritten, if so.
  std::optional<write_error> refusal(std::optional<struct stat> const& info) const;
  /// Whether the path leads to this file now.
  bool is_at_path(struct stat const& file) const;
  /// Whether what was found stands under the name still, as it was.
  bool is_as_found() const;
  /// An error by which nothing was written, as there is something else than was known.
  write_error changed(std::optional<struct stat> const& info) const;

  std::string const& path() const { return path_; }
  open_place const& place() const { return place_; }
  /// Nothing if there was none.
  std::optional<struct stat> const& info() const { return info_; }

  /// Those that are asked for, whether the file is there or is made.
  std::optional<struct stat> const& attributes(bool exists) const {
    return options_.attributes || exists ? options_.attributes : options_.attributes_if_new;
  }
  /// Gives the open file `fd`, which has `present`, the owner, group and mode of `wanted` as far as
  /// that is allowed. False if the owner or the group can't be given, with errno.
  bool give_attributes(int fd, struct stat const& present, struct stat const& wanted) const;

 private:
  std::string const& path_;
  write_options const& options_;
  file_system_calls& calls_;
  open_place place_;
  std::optional<struct stat> info_;
};

/// There is a link on the way that wasn't there when the file was read.
file_error leads_elsewhere(std::string const& path);
/// Another program has written at the same time, or has put another file in the place.
file_error meddling(std::string const& path, bool replaced);

}  // namespace path
