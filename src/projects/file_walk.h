#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "path/file_error.h"
#include "path/glob.h"
#include "projects/folder_listing.h"
#include "projects/ignore_rules.h"
#include "projects/project_item.h"

namespace projects {

/// A file, or a folder with all in it that the patterns take. Absolute, standardized.
struct walk_root {
  std::string path;
  bool is_folder = false;
  filter_patterns patterns;
};

/// Those of items and of what is in groups.
std::vector<walk_root> walk_roots_of(item_list const& items, filter_patterns const& standard);

/// Whether a walk without options comes to this file, as far as names say. Absolute, standardized.
/// Any thread.
bool walk_would_take(std::vector<walk_root> const& roots, std::string const& path);

struct walk_options {
  /// Globs (path/glob.h). Files that none of the first matches are left out, if there are any; so
  /// are the files and folders that one of the others matches.
  std::vector<std::string> included, excluded;
  /// Leave out what .gitignore files say.
  bool honours_gitignore = false;
};

/// All files of a project, in the order of its tree, each once. Folders are read when it comes to
/// them. A link to a folder is followed if that lies outside of all roots, and each such folder
/// once: so there are no circles, and what is in a root comes under its own name.
///
///     file_walk walk(tree.walk_roots(), {});
///     for (std::string path; walk.next(path);) use(path);
///
/// Any thread, one at a time.
class file_walk {
 public:
  file_walk(std::vector<walk_root> roots, walk_options const& options);
  file_walk(file_walk const&) = delete;
  file_walk& operator=(file_walk const&) = delete;

  /// False at the end.
  bool next(std::string& path);
  /// The folders that could not be read so far, or not all of them.
  std::vector<path::file_error> const& errors() const { return errors_; }

 private:
  struct level {
    std::string path;
    std::vector<folder_entry> entries;
    std::size_t at = 0;
  };

  bool begin_root();
  void enter(std::string const& path);
  void leave();
  bool is_wanted(std::string const& path, bool is_folder);
  bool is_followed(std::string const& link);

  std::vector<walk_root> roots_;
  std::vector<std::string> real_roots_;
  std::size_t next_root_ = 0;
  std::optional<path_filters> filters_;  // of the present root
  std::vector<path::glob_t> included_, excluded_;
  bool const honours_gitignore_;
  std::optional<ignore_stack> ignored_;
  std::vector<level> levels_;
  std::unordered_set<std::string> seen_;  // files, if there is more than one root
  std::unordered_set<std::string> followed_;
  std::vector<path::file_error> errors_;
};

}  // namespace projects
