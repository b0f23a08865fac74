#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/file_watcher.h"
#include "platform/run_loop.h"
#include "projects/background.h"
#include "projects/file_walk.h"
#include "projects/project_item.h"

namespace projects {

/// The tree of a project. A folder is read when it is first asked for, on another thread, and read
/// again when it is refreshed and has changed, so that the size of what nobody looks at costs
/// nothing. Items that a reading finds again keep their identity if they are folders.
///
/// Main thread only.
class file_tree {
 public:
  /// Both must outlive it.
  file_tree(platform::run_loop& loop, platform::file_watcher& files)
      : files_(files), background_(loop) {}

  /// Called when the children of an item or the marks of some of them have changed; with null for
  /// the roots.
  std::function<void(project_item*)> did_change;
  /// The paths of unsaved files: they stay in their folders, as missing, when they are deleted.
  std::function<std::vector<std::string>()> unsaved_files;

  item_list const& roots() const { return roots_; }
  void set_roots(item_list items);

  /// Puts files and folders in a group, or at the top without one. A folder gets the pattern for
  /// folders that holds now as its own. Gives the paths where nothing stands, which are left out.
  std::vector<std::string> add_files(std::vector<std::string> const& paths, project_item* group,
                                     std::size_t index);
  project_item& add_group(std::string name, project_item* group, std::size_t index);
  /// Takes an item that is in the project itself out of it; nothing happens to its file.
  void remove(project_item& item);
  /// Moves such items to a place in a group; those that the group is in stay where they are.
  void move(std::vector<project_item*> const& items, project_item* group, std::size_t index);

  /// A file or folder has been moved on the disk: items of the project itself that are it, or in
  /// it, get the path that it has now.
  void follow_move(std::string const& from, std::string const& to);

  /// An open folder is read and watched.
  void set_expanded(project_item& item, bool expanded);
  /// Begins to read a folder, unless that has been done.
  void read(project_item& folder);
  /// Looks what has become of the files of the project and of the folders that have been read;
  /// `done` is called when all are as they are on the disk.
  void refresh(std::function<void()> done = {});
  /// The same for one folder.
  void refresh_folder(project_item& folder);
  bool is_busy() const { return background_.is_busy(); }

  /// Among what has been read; null if there is none.
  project_item* item_with_path(std::string const& path) const;
  /// The item with the path or, as far as folders have been read, the last one on the way to it;
  /// null if nothing in the project leads there.
  project_item* item_on_way(std::string const& path) const;
  /// Whether the path is that of a file of the project, read or not.
  bool holds_file(std::string const& path) const;
  /// Where a walk over all files begins.
  std::vector<walk_root> walk_roots() const;

 private:
  struct found_folder;
  static item_list items_of(folder_listing& listing);
  void look_at(project_item& folder, bool first);
  void take(project_item& folder, found_folder& found);
  item_list merged(project_item& folder, item_list found);
  void look_at_files();
  void changed(project_item* item);
  void dispose(item_list items);
  void finish_refresh();

  platform::file_watcher& files_;
  item_list roots_;
  unsigned structure_ = 0;  // changes with the items that are in the project itself
  unsigned under_way_ = 0;  // looks of a refresh
  std::vector<std::function<void()>> when_refreshed_;
  background background_;
};

}  // namespace projects
