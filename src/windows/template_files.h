#pragma once

#include <memory>
#include <string>
#include <vector>

#include "commands/shell.h"

class BundleItem;

namespace windows {

/// The files that a template makes. Its `command` is a script that writes what its user is to begin
/// with to QN_NEW_FILE (also given as QN_NEW_FILE_DIRECTORY and QN_NEW_FILE_BASENAME), and runs in
/// the template's own folder; if it makes other files it prints their paths, one a line. Main
/// thread only.
struct template_files {
  std::vector<std::string> paths;  ///< of files that exist
  std::string error;               ///< why there are none
  std::size_t missing = 0;         ///< files that were named but don't exist
};

/// `path` is where the new file should stand. Runs the script, handling events meanwhile.
template_files files_for_template(BundleItem& item, std::string const& path,
                                  commands::variables variables);

/// A folder of our own for one new document, with all in it taken away at the end.
class temporary_document {
 public:
  /// `extension` may be empty. path() is empty when there is no place for it.
  explicit temporary_document(std::string const& extension);
  ~temporary_document();
  temporary_document(temporary_document const&) = delete;
  temporary_document& operator=(temporary_document const&) = delete;

  std::string const& path() const { return path_; }
  /// The folder stays: what is in it is the user's from now on.
  void keep() { folder_.clear(); }

 private:
  std::string folder_, path_;
};

}  // namespace windows
