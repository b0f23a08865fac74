#include "projects/file_tree.h"

#include "path/file_system.h"
#include "path/path.h"
#include "platform/system/memory_reserve.h"
#include "plist/key_order.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <unordered_map>
#include <utility>

namespace projects {
namespace {

constexpr std::size_t quickly_destroyed = 1000;  // items
constexpr std::size_t many = 50'000;             // that sorting took much memory for

struct file_state {
  bool is_missing = false, is_link = false;
  friend bool operator==(file_state, file_state) = default;
};

file_state state_of(std::string const& path) {
  struct stat info;
  file_state state;
  state.is_link = lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
  state.is_missing = ::stat(path.c_str(), &info) != 0;
  return state;
}

bool is_in_folder(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.size() > 1 && path.front() == '/';
  return path.size() > folder.size() + 1 && path.starts_with(folder) && path[folder.size()] == '/';
}

bool is_regular_file(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

// Whether the filters take each folder on the way and the file itself.
bool is_taken(std::string const& path, std::string const& folder, path_filters const& filters) {
  if (!is_in_folder(path, folder) || !filters.files.passes(path)) return false;
  for (std::string at = path::parent(path); at != folder; at = path::parent(at))
    if (!filters.folders.passes(at)) return false;
  return is_regular_file(path);
}

}  // namespace

// What another thread has found out about a folder.
struct file_tree::found_folder {
  bool is_missing = false, is_unchanged = false;
  folder_listing listing;
  item_list items;
};

item_list file_tree::items_of(folder_listing& listing) {
  item_list result;
  result.reserve(listing.entries.size());
  for (folder_entry& entry : listing.entries)
    result.push_back(std::make_unique<project_item>(std::move(entry)));
  std::vector<folder_entry>().swap(listing.entries);
  return result;
}

void file_tree::changed(project_item* item) {
  if (did_change) did_change(item);
}

void file_tree::dispose(item_list items) {
  if (items.size() < quickly_destroyed) return;
  auto const kept = std::make_shared<item_list>(std::move(items));
  // Watches are the main thread's.
  visit_items(*kept, [](project_item& item) {
    if (item.is_watched()) item.set_watch(nullptr);
    return true;
  });
  background_.run([kept]() -> background::answer {
    std::size_t const count = kept->size();
    item_list().swap(*kept);
    if (count > many) platform::return_freed_memory();
    return {};
  });
}

void file_tree::set_roots(item_list items) {
  ++structure_;
  dispose(std::exchange(roots_, std::move(items)));
  changed(nullptr);
  std::vector<project_item*> open;
  visit_items(roots_, [&](project_item& item) {
    if (item.is_expanded && item.kind() == item_kind::folder) open.push_back(&item);
    return true;
  });
  for (project_item* const item : open) set_expanded(*item, true);
  refresh();
}

std::vector<std::string> file_tree::add_files(std::vector<std::string> const& paths,
                                              project_item* group, std::size_t index) {
  std::vector<std::string> skipped;
  for (std::string const& given : paths) {
    std::string const path = path::standardize(given);
    struct stat info;
    if (path.empty() || path.front() != '/' || ::stat(path.c_str(), &info) != 0) {
      skipped.push_back(given);
      continue;
    }
    bool const is_folder = S_ISDIR(info.st_mode);
    reference own{.path = path, .file_pattern = {}, .folder_pattern = {}, .last_used = {}};
    if (is_folder) own.folder_pattern = filter_patterns::standard().folders;
    std::string const name = path::name(path);
    auto item = std::make_unique<project_item>(is_folder ? item_kind::folder : item_kind::file,
                                               name.empty() ? path : name, std::move(own));
    item->is_link = state_of(path).is_link;
    if (group != nullptr) {
      group->insert(index++, std::move(item));
    } else {
      index = std::min(index, roots_.size());
      roots_.insert(roots_.begin() + static_cast<std::ptrdiff_t>(index++), std::move(item));
    }
  }
  ++structure_;
  changed(group);
  return skipped;
}

project_item& file_tree::add_group(std::string name, project_item* group, std::size_t index) {
  auto item = std::make_unique<project_item>(item_kind::group, std::move(name), reference{});
  project_item& added = *item;
  if (group != nullptr) {
    group->insert(index, std::move(item));
  } else {
    index = std::min(index, roots_.size());
    roots_.insert(roots_.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
  }
  ++structure_;
  changed(group);
  return added;
}

void file_tree::remove(project_item& item) {
  if (item.own() == nullptr) return;
  ++structure_;
  project_item* const parent = item.parent();
  auto& siblings = parent != nullptr ? parent->children() : roots_;
  auto const at = std::find_if(siblings.begin(), siblings.end(),
                               [&](auto const& other) { return other.get() == &item; });
  auto const index = static_cast<std::size_t>(at - siblings.begin());
  item_list removed;
  if (parent != nullptr) {
    removed.push_back(parent->remove(index));
  } else {
    removed.push_back(std::move(roots_[index]));
    roots_.erase(roots_.begin() + static_cast<std::ptrdiff_t>(index));
  }
  changed(parent);
}

void file_tree::move(std::vector<project_item*> const& items, project_item* group,
                     std::size_t index) {
  auto const holds_group = [&](project_item const* item) {
    for (project_item const* at = group; at != nullptr; at = at->parent())
      if (at == item) return true;
    return false;
  };
  auto const list_of = [&](project_item* parent) -> item_list const& {
    return parent != nullptr ? parent->children() : roots_;
  };
  ++structure_;
  for (project_item* const item : items) {
    if (item->own() == nullptr || holds_group(item)) continue;
    project_item* const parent = item->parent();
    item_list const& siblings = list_of(parent);
    auto const at = std::find_if(siblings.begin(), siblings.end(),
                                 [&](auto const& other) { return other.get() == item; });
    auto const from = static_cast<std::size_t>(at - siblings.begin());
    std::unique_ptr<project_item> taken;
    if (parent != nullptr) {
      taken = parent->remove(from);
    } else {
      taken = std::move(roots_[from]);
      roots_.erase(roots_.begin() + static_cast<std::ptrdiff_t>(from));
    }
    if (parent == group && from < index) --index;
    if (group != nullptr) {
      group->insert(index, std::move(taken));
    } else {
      index = std::min(index, roots_.size());
      roots_.insert(roots_.begin() + static_cast<std::ptrdiff_t>(index), std::move(taken));
    }
    ++index;
    changed(parent);
  }
  changed(group);
}

void file_tree::follow_move(std::string const& from, std::string const& to) {
  project_item* const moved = item_with_path(from);
  bool const is_renamed =
      moved != nullptr && moved->own() == nullptr && path::parent(from) == path::parent(to);
  if (is_renamed) moved->set_name(path::name(to));
  visit_items(roots_, [&](project_item& item) {
    if (item.own() == nullptr) return false;
    std::string& path = item.own()->path;
    if (path == from && item.name() == path::name(from)) item.set_name(path::name(to));
    if (path == from || is_in_folder(path, from)) path = to + path.substr(from.size());
    return item.kind() == item_kind::group;
  });
  ++structure_;
  // Folders are watched by their paths.
  visit_items(roots_, [&](project_item& item) {
    std::string const path = item.is_watched() ? item.path() : "";
    if (path == to || is_in_folder(path, to)) set_expanded(item, true);
    return true;
  });
  changed(nullptr);
}

void file_tree::set_expanded(project_item& item, bool expanded) {
  item.is_expanded = expanded;
  if (item.kind() != item_kind::folder) return;
  if (!expanded) return item.set_watch(nullptr);
  read(item);
  item.set_watch(files_.watch_folder(item.path(), [this, &item, alive = item.lifetime()] {
    if (!alive.expired()) refresh_folder(item);
  }));
}

void file_tree::read(project_item& folder) {
  if (folder.kind() != item_kind::folder || folder.state() != reading::not_yet) return;
  look_at(folder, true);
}

void file_tree::refresh_folder(project_item& folder) {
  if (folder.state() == reading::not_yet) return;
  ++under_way_;
  look_at(folder, false);
}

// A look that doesn't belong to a refresh isn't counted.
void file_tree::look_at(project_item& folder, bool first) {
  folder_stamp const known =
      folder.state() == reading::read ? folder.stamp() : folder_stamp{.is_young = true};
  if (first) folder.set_reading(reading::under_way);
  auto const patterns = folder.patterns(filter_patterns::standard());
  background_.run([this, &folder, first, known, patterns, number = folder.begin_look(),
                   path = folder.path(), is_link = folder.is_link,
                   alive = folder.lifetime()]() -> background::answer {
    auto const found = std::make_shared<found_folder>();
    auto const now = stamp_of_folder(path);
    found->is_missing = !now;
    found->is_unchanged = now && known.still_holds(*now);
    if (now && !found->is_unchanged) {
      if (is_link && leads_in_circle(path))
        found->listing.error = path::make_file_error("open", path, ELOOP);
      else
        found->listing = list_folder(path, path_filters(patterns));
      mark_ignored(path, found->listing.entries);
      found->items = items_of(found->listing);
      if (found->items.size() > many) platform::return_freed_memory();
    }
    return [this, &folder, first, alive, found, number] {
      if (!alive.expired() && folder.end_look(number)) take(folder, *found);
      if (!first) finish_refresh();
    };
  });
}

void file_tree::take(project_item& folder, found_folder& found) {
  bool const was_missing = std::exchange(folder.is_missing, found.is_missing);
  if (found.is_missing) {
    bool const is_known =
        folder.state() == reading::failed && folder.error() && folder.error()->code == ENOENT;
    folder.set_children(merged(folder, {}));
    folder.set_reading(reading::failed, {}, path::make_file_error("open", folder.path(), ENOENT));
    if (!is_known || !was_missing) changed(&folder);
    return;
  }
  if (found.is_unchanged) {
    if (was_missing) changed(&folder);
  } else {
    folder.set_children(merged(folder, std::move(found.items)));
    folder.set_reading(found.listing.error ? reading::failed : reading::read, found.listing.stamp,
                       std::move(found.listing.error));
    changed(&folder);
  }
  for (auto const& child : folder.children())
    if (child->kind() == item_kind::folder) refresh_folder(*child);
}

// The new items, but for folders that are known already. The others are disposed of, if they are
// many by another thread.
item_list file_tree::merged(project_item& folder, item_list found) {
  std::unordered_map<std::string_view, std::size_t> known;
  item_list old;
  for (auto const& child : folder.children())
    if (child->kind() == item_kind::folder || child->is_selected || child->is_pinned)
      known[child->name()] = 0;
  std::vector<std::string> unsaved;
  if (unsaved_files) unsaved = unsaved_files();
  std::string const path = folder.path();
  std::erase_if(unsaved, [&](auto const& file) { return path::parent(file) != path; });
  while (!folder.children().empty()) old.push_back(folder.remove(folder.children().size() - 1));
  for (std::size_t n = 0; n < old.size(); ++n)
    if (auto const it = known.find(old[n]->name()); it != known.end()) it->second = n;
  std::erase_if(unsaved, [&](auto const& file) {
    std::string const name = path::name(file);
    return std::any_of(found.begin(), found.end(),
                       [&](auto const& i) { return i->name() == name; });
  });
  for (auto& item : found) {
    auto const it = known.find(item->name());
    if (it == known.end()) continue;
    auto& before = old[it->second];
    if (!before || before->kind() != item->kind()) continue;
    before->is_link = item->is_link;
    before->is_ignored = item->is_ignored;
    before->is_missing = false;
    // What is in `known` refers to the name, which moves with the item.
    item = std::move(before);
  }
  for (std::string const& file : unsaved) {
    auto item = std::make_unique<project_item>(folder_entry{path::name(file)});
    item->is_missing = true;
    std::string const key = plist::lexicographic_key(item->name());
    auto const at = std::find_if(found.begin(), found.end(), [&](auto const& other) {
      return key < plist::lexicographic_key(other->name());
    });
    found.insert(at, std::move(item));
  }
  known.clear();
  std::erase(old, nullptr);
  dispose(std::move(old));
  return found;
}

void file_tree::look_at_files() {
  std::vector<std::pair<project_item*, std::string>> files;
  visit_items(roots_, [&](project_item& item) {
    bool const is_own = item.own() != nullptr;
    if (is_own && item.kind() != item_kind::group) files.emplace_back(&item, item.path());
    return is_own;
  });
  ++under_way_;
  background_.run([this, files = std::move(files), structure = structure_]() -> background::answer {
    std::vector<file_state> states;
    states.reserve(files.size());
    for (auto const& [item, path] : files) states.push_back(state_of(path));
    return [this, files, states = std::move(states), structure] {
      if (structure != structure_) {
        look_at_files();
        return finish_refresh();
      }
      for (std::size_t n = 0; n < files.size(); ++n) {
        project_item& item = *files[n].first;
        if (file_state{item.is_missing, item.is_link} == states[n]) continue;
        item.is_missing = states[n].is_missing;
        item.is_link = states[n].is_link;
        changed(item.parent());
      }
      finish_refresh();
    };
  });
}

void file_tree::refresh(std::function<void()> done) {
  if (done) when_refreshed_.push_back(std::move(done));
  look_at_files();
  visit_items(roots_, [&](project_item& item) {
    if (item.own() == nullptr) return false;
    if (item.kind() == item_kind::folder) refresh_folder(item);
    return item.kind() == item_kind::group;
  });
}

void file_tree::finish_refresh() {
  if (--under_way_ != 0) return;
  for (auto const& done : std::exchange(when_refreshed_, {})) done();
}

project_item* file_tree::item_on_way(std::string const& path) const {
  // Of an item of the project itself that the path is that of, or leads into.
  auto const last_on_way = [&](project_item& from) {
    project_item* at = &from;
    std::size_t length = at->own()->path == "/" ? 0 : at->own()->path.size();
    while (length < path.size()) {
      std::size_t const end = std::min(path.find('/', length + 1), path.size());
      std::string_view const name = std::string_view(path).substr(length + 1, end - length - 1);
      item_list const& children = at->children();
      auto const next = std::find_if(children.begin(), children.end(),
                                     [&](auto const& child) { return child->name() == name; });
      if (next == children.end()) break;
      at = next->get();
      length = end;
    }
    return std::pair(at, length >= path.size());
  };
  project_item* result = nullptr;
  bool is_whole = false;
  visit_items(roots_, [&](project_item& item) {
    if (is_whole || item.own() == nullptr) return false;
    if (item.kind() == item_kind::group) return true;
    bool const is_folder = item.kind() == item_kind::folder;
    if (item.own()->path != path && !(is_folder && is_in_folder(path, item.own()->path)))
      return false;
    auto const [last, whole] = last_on_way(item);
    if (result == nullptr || whole) result = last;
    is_whole = whole;
    return false;
  });
  return result;
}

project_item* file_tree::item_with_path(std::string const& path) const {
  project_item* const found = item_on_way(path);
  return found != nullptr && found->path() == path ? found : nullptr;
}

bool file_tree::holds_file(std::string const& path) const {
  auto const standard = filter_patterns::standard();
  bool result = false;
  visit_items(roots_, [&](project_item& item) {
    if (result || item.own() == nullptr) return false;
    if (item.kind() == item_kind::file)
      result = item.path() == path && is_regular_file(path);
    else if (item.kind() == item_kind::folder && is_in_folder(path, item.path()))
      result = is_taken(path, item.path(), path_filters(item.patterns(standard)));
    return item.kind() == item_kind::group;
  });
  return result;
}

std::vector<walk_root> file_tree::walk_roots() const {
  return walk_roots_of(roots_, filter_patterns::standard());
}

}  // namespace projects
