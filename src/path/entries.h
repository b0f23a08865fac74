#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>
#include <string>

namespace path {

/// What a folder holds, "." and ".." left out, in the order that the file system gives. Copies
/// share one scan, which goes with the last of them. A folder that can't be read gives none.
///
///     for (dirent const* entry : path::entries(folder, "*.{c,h}"))
///       open(path::join(folder, entry->d_name));
class entries {
 public:
  using iterator = dirent const* const*;

  /// Those whose paths, made of the folder's and their name, the glob matches; "" matches all.
  explicit entries(std::string const& folder, std::string const& glob = "");
  /// All of the folder that is open as `descriptor`.
  explicit entries(int descriptor);

  iterator begin() const;
  iterator end() const;
  std::size_t size() const { return static_cast<std::size_t>(end() - begin()); }
  /// The number of all entries, those that don't match included.
  std::size_t scanned() const;

 private:
  struct helper_t;
  std::shared_ptr<helper_t> helper_;
};

}  // namespace path
