#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_watcher.h"
#include "plist/value.h"
#include "projects/folder_listing.h"
#include "projects/path_filter.h"

/// The items of a project's tree: files, folders that show what is on the disk, and groups that
/// the user fills. A file takes some 120 bytes, so that a tree can have a million of them.
namespace projects {

class project_item;
using item_list = std::vector<std::unique_ptr<project_item>>;

enum class item_kind : std::uint8_t { file, folder, group };

/// How far a folder has been read. What is in it is known once it is `read`; one that `failed`
/// shows what could be read.
enum class reading : std::uint8_t { not_yet, under_way, read, failed };

/// What an item has that the user has put in the project. Items found in a folder have none of it,
/// and aren't stored.
struct reference {
  std::string path;                         ///< absolute; empty for a group
  std::optional<std::string> file_pattern;  ///< of a folder; without one that of the settings
  std::optional<std::string> folder_pattern;
  std::optional<plist::date> last_used;  ///< when a tab showed it
  bool save_as_absolute_path = false;
};

class project_item {
 public:
  /// An item of the project itself.
  project_item(item_kind kind, std::string name, reference own);
  /// What a folder holds.
  explicit project_item(folder_entry entry);

  item_kind kind() const { return kind_; }
  /// As it is shown; of a file or folder the last component of its path, unless it has been given
  /// another name. Bytes, perhaps no UTF-8.
  std::string const& name() const { return name_; }
  void set_name(std::string name) { name_ = std::move(name); }
  /// Absolute; empty for a group.
  std::string path() const;
  project_item* parent() const { return parent_; }
  /// Null for what was found in a folder.
  reference* own() { return own_.get(); }
  reference const* own() const { return own_.get(); }
  bool is_folder_reference_child() const { return own_ == nullptr; }
  /// A folder's, by its own or those of the nearest folder above that is in the project itself;
  /// `standard` where there are none.
  filter_patterns patterns(filter_patterns const& standard) const;

  item_list const& children() const;
  /// Takes them as its own.
  void set_children(item_list children);
  void insert(std::size_t index, std::unique_ptr<project_item> child);
  std::unique_ptr<project_item> remove(std::size_t index);

  /// Of a folder.
  reading state() const;
  std::optional<path::file_error> const& error() const;
  folder_stamp const& stamp() const;
  void set_reading(reading state, folder_stamp stamp = {},
                   std::optional<path::file_error> error = {});

  bool is_missing = false;  ///< not on the disk
  bool is_link = false;
  bool is_ignored = false;  ///< by the rules of the repository that the folder above is in
  bool is_expanded = false;
  bool is_selected = false;
  bool is_pinned = false;  ///< somebody knows it: a reading that finds it again keeps it, as it
                           ///< does what is selected

  /// Looks at the folder are numbered as they begin. False for one whose answer comes after that of
  /// a later one.
  std::uint32_t begin_look() { return ++holder_->begun; }
  bool end_look(std::uint32_t number);

  /// Expires when the item goes. Not for files.
  std::weak_ptr<char> lifetime();
  /// What the folder is watched by as long as it is there; null if it isn't. Not for files.
  void set_watch(std::unique_ptr<platform::file_watcher::token> watch);
  bool is_watched() const;

 private:
  struct holder {
    item_list children;
    reading state = reading::not_yet;
    std::uint32_t begun = 0, ended = 0;  // looks
    folder_stamp stamp;
    std::optional<path::file_error> error;
    std::shared_ptr<char> lives;
    std::unique_ptr<platform::file_watcher::token> watch;
  };

  item_kind const kind_;
  project_item* parent_ = nullptr;
  std::string name_;
  std::unique_ptr<reference> own_;
  std::unique_ptr<holder> holder_;  // of what isn't a file
};

/// Calls `visit` for each item, an item before its children, down to where folders have been read.
/// False from `visit` leaves out the children.
void visit_items(item_list const& items, std::function<bool(project_item&)> const& visit);

/// The path that leads from the folder to `path`, with ".." where it must; `path` itself where the
/// two have not even the first component in common. Both are absolute and standardized. "." for the
/// folder itself.
std::string relative_path(std::string const& path, std::string const& folder);

}  // namespace projects
