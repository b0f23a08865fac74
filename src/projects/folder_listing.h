#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "path/file_error.h"
#include "projects/path_filter.h"

/// What stands in one folder, as a project's tree shows it. Any thread.
namespace projects {

struct folder_entry {
  std::string name;
  bool is_folder = false;  ///< or a link to one
  bool is_link = false;
  bool is_ignored = false;  ///< see mark_ignored()
};

/// When a folder was read. Equal stamps mean that no name has come or gone since.
struct folder_stamp {
  std::uint64_t device = 0, inode = 0;
  std::int64_t modified = 0;  ///< in nanoseconds since 1970
  /// The folder had just been changed, so that a change after the reading may bear the same date.
  bool is_young = false;

  bool still_holds(folder_stamp const& now) const {
    return !is_young && device == now.device && inode == now.inode && modified == now.modified;
  }
};

struct folder_listing {
  folder_stamp stamp;
  std::vector<folder_entry> entries;  ///< files and folders mixed, in the order of names
  /// Why it can't be read, or not all of it.
  std::optional<path::file_error> error;
};

/// Names as a person looks them up: runs of digits are numbers, case makes no difference unless
/// names are the same but for it. Total: of two different names one comes first, in every locale.
void sort_by_name(std::vector<folder_entry>& entries);

/// Files and folders that the filters take; no pipes, sockets and devices, and no links that lead
/// nowhere. `path` is absolute.
folder_listing list_folder(std::string const& path, path_filters const& filters);

/// Marks what the .gitignore files of the repository that the folder is in leave out. Nothing is
/// marked where that would take long.
void mark_ignored(std::string const& path, std::vector<folder_entry>& entries);

/// Nothing if there is no such folder.
std::optional<folder_stamp> stamp_of_folder(std::string const& path);

/// Whether `path`, which leads to a folder by a link, leads to one of those that it stands in.
bool leads_in_circle(std::string const& path);

}  // namespace projects
