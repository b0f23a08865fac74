#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"
#include "projects/BriskStringRanker.h"

/// Choosing one of many files by a few letters.
namespace projects {

/// What a user types to go to a file: letters of its name, before them letters of folders above it,
/// each followed by "/", and after them ":LINE" or ":LINE:COLUMN".
struct typed_file_name {
  explicit typed_file_name(std::u16string_view typed);

  std::u16string letters;               ///< as rankers want them; empty for any file
  std::vector<std::u16string> folders;  ///< the same, outermost first
  std::size_t line = 0, column = 0;     ///< from 1; 0 for none
};

/// The files of a project, and those that what has been typed stands for. Any thread, one at a
/// time.
class file_chooser {
 public:
  /// Files by their extensions, which are in lower case: those of `denied` are left out, and where
  /// there are `allowed` ones all others.
  struct extensions {
    std::vector<std::string> denied, allowed;
    /// By the settings. Main thread only.
    static extensions standard();
  };

  /// Letters of folders are not looked for in `top`, a folder, and those above it.
  file_chooser(std::vector<std::string> paths, extensions const& wanted, std::string top = "");

  /// Those whose names have the letters, the best first and among equals in the order of `paths`;
  /// without letters all that are in such folders.
  void search(typed_file_name const& typed);

  std::size_t size() const { return rows_.size(); }
  std::string const& path(std::size_t row) const { return files_[rows_[row]].path; }
  /// How many of the last components of its path tell the row from others of the same name; 0 if it
  /// is the only one.
  std::size_t components_shown(std::size_t row) const;
  /// The units of the file's name, as UTF-16, that the letters match.
  std::vector<std::size_t> mask(std::size_t row, typed_file_name const& typed) const;

 private:
  struct file {
    std::string path;
    BriskStringRanker ranker;
  };
  void tell_names_apart();

  std::string const top_;
  std::vector<file> files_;
  std::vector<std::uint32_t> rows_;                        // of files_
  std::map<std::string, std::size_t, std::less<>> shown_;  // by name
};

/// What was chosen for some letters comes first for them again, and for their beginnings.
/// `bindings` is the value of WynFileChooserBindings: dictionaries "searchString" and "match", a
/// path. The path for these letters; empty if there is none.
std::string bound_file(plist::array const& bindings, std::string const& letters);
/// The bindings after `path` was chosen, which was first in the list or not.
plist::array bindings_after(plist::array bindings, std::string const& letters,
                            std::string const& path, bool was_first);

}  // namespace projects
