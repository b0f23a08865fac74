#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"
#include "projects/abbreviation.h"
#include "projects/file_batch.h"

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

/// Files by their extensions, which are in lower case: those of `denied` are left out, and where
/// there are `allowed` ones all others.
struct offered_extensions {
  std::vector<std::string> denied, allowed;
  /// By the settings. Main thread only.
  static offered_extensions standard();

  bool take(std::string_view path) const;
};

/// The files of a project, and those that what has been typed stands for. More files may come at
/// any time. A letter costs time in proportion to the files that the letters before it have found;
/// rows are put in order when they are asked for. Any thread, one at a time.
class file_chooser {
 public:
  /// Finished ones, which may be shared.
  using batch = std::shared_ptr<file_batch const>;

  /// Files that come before all others, in this order; among the others they are left out.
  void set_first(batch files);
  void add(batch files);
  /// Takes these instead of all that were added.
  void replace(std::vector<batch> const& files);
  /// Letters of folders are not looked for in `top`, a folder, and those above it.
  void set_top(std::string top);

  /// Those whose names have the letters, the best first and among equals in their order; without
  /// letters all that are in such folders.
  void search(typed_file_name const& typed);

  std::size_t total() const { return total_; }
  std::size_t size() const { return rows_.size(); }
  std::string path(std::size_t row) const;
  /// Nothing if the file isn't listed.
  std::optional<std::size_t> row_of(std::string_view path) const;
  /// How many of the last components of its path tell the row from others of the same name; 0 if it
  /// is the only one.
  std::size_t components_shown(std::size_t row) const;
  /// The units of the file's name, as UTF-16, that the letters match.
  std::vector<std::size_t> mask(std::size_t row) const;

 private:
  struct part {
    batch files;
    std::vector<file_batch::index> doubles;  // those that are in the first part too, in order
    std::vector<double> scores;              // by name; empty without letters
    std::vector<char> folders;               // whether they fit; empty without parts of folders
  };
  struct row {
    double score;
    std::uint32_t part;
    file_batch::index file;
    bool comes_before(row const& other) const;
  };

  void find_doubles(part& of) const;
  void score(part& of, bool narrows);
  void list(part const& of, std::uint32_t number);
  bool is_listed(part const& of, file_batch::index file) const;
  row const& sorted(std::size_t number) const;

  std::string top_;
  std::vector<part> parts_ = {{std::make_shared<file_batch const>(), {}, {}, {}}};
  std::size_t total_ = 0;
  typed_file_name typed_{u""};
  std::unique_ptr<abbreviation> wanted_ = std::make_unique<abbreviation>(u"");
  // The first ones in order, as far as they have been asked for.
  mutable std::vector<row> rows_;
  mutable std::size_t sorted_ = 0;
  mutable std::map<std::string, std::size_t, std::less<>> shown_;  // by name
};

/// What was chosen for some letters comes first for them again, and for their beginnings.
/// `bindings` is the value of WynFileChooserBindings: dictionaries "searchString" and "match", a
/// path. The path for these letters; empty if there is none.
std::string bound_file(plist::array const& bindings, std::string const& letters);
/// The bindings after `path` was chosen, which was first in the list or not.
plist::array bindings_after(plist::array bindings, std::string const& letters,
                            std::string const& path, bool was_first);

}  // namespace projects
