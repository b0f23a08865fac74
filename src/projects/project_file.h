#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "path/file_writer.h"
#include "plist/value.h"
#include "projects/project_item.h"

/// Project files (.qnproj): property lists in XML. Paths in them are relative to the project's
/// folder, so that it can be moved as a whole. What is of the wrong kind counts as not there.
///
/// Paths that are no valid text are stored as data instead of strings.
namespace projects {

/// What a project file holds. Paths are absolute here.
struct project_contents {
  item_list items;
  plist::dictionary meta_data;  ///< of documents that aren't open, by path
  plist::array variables;       ///< dictionaries "variable", "value", "enabled"
  std::string current_document;
  std::vector<std::string> open_documents;  ///< in the order of the tabs
  std::string window_frame;                 ///< in the desktop's own form
  bool shows_tree = false;
  std::optional<std::int64_t> tree_width;
};

/// The tree of "documents". The disk isn't looked at: an entry stands for a folder if it says so.
item_list mutable_document_tree(plist::array const& entries, std::string const& directory);
/// The reverse. Items found in folders aren't stored.
plist::array savable_document_tree(item_list const& items, std::string const& directory);

project_contents project_contents_of(plist::value const& file, std::string const& directory);
/// `directory` is the project's folder and `file_folder` that of the file to be written; they
/// differ when a project is saved elsewhere.
plist::dictionary project_value(project_contents const& contents, item_list const& items,
                                std::string const& directory, std::string const& file_folder);

struct project_read_result {
  project_contents contents;
  /// Why the file can't be used, as a sentence without its full stop.
  std::optional<std::string> error;
  /// Which the file was; nothing if there is none.
  std::optional<path::file_version> version;
};

project_read_result read_project_file(std::string const& path);

/// Writes it so that at any time the old or the new file is there whole, with the attributes of the
/// old one; only a file that can't be replaced, such as one with other hard links, is written in
/// its place. With `known` a file that isn't that one any more is left alone. Sets `version`.
std::optional<path::write_error> write_project_file(std::string const& path,
                                                    plist::dictionary const& value,
                                                    std::optional<path::known_file> const& known,
                                                    std::optional<path::file_version>& version);

}  // namespace projects
