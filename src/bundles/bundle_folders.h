#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace bundles {

/// Where bundles are looked for and where the user's changes go. Main thread only.
struct bundle_folders {
  std::vector<std::string> domains;  ///< libraries; the first is the user's
  std::string shared_support;        ///< what is installed beside the program
  std::string index_file;            ///< empty for an index that isn't kept

  /// Those of the running program.
  static bundle_folders standard();

  /// The user's own bundles and changes. With `create` the folder is made if it can be.
  std::string LocalBundlePath(bool create = false) const;
  /// What the user has installed, as it came.
  std::string PristineCopyBundlePath(bool create = false) const;
  /// The folder with what commands share: of the user's, the installed and the program's own the
  /// one whose file "version" holds the highest number, the first of equals. "" if there is none.
  std::string supportPath() const;
  /// All search paths; what stands in an earlier one goes over what stands in a later one.
  std::vector<std::string> bundlePaths() const;
};

/// Whether `path` is below the folder, by their names.
bool is_below(std::string_view path, std::string_view folder);

/// A path in the directory, which is made if need be, at which nothing exists: named for `name` as
/// far as a file can be, with a number where that is taken. Nothing if the directory can't be had.
std::optional<std::string> UniqueFileInDirectory(std::string const& directory,
                                                 std::string_view name, std::string_view extension);

}  // namespace bundles
