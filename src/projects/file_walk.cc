#include "projects/file_walk.h"

#include <algorithm>
#include <cstdlib>

namespace projects {
namespace {

std::string real_path(std::string const& path) {
  std::unique_ptr<char, decltype(&std::free)> const real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real ? real.get() : "";
}

bool is_at_or_below(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) &&
         (path.size() == folder.size() || folder == "/" || path[folder.size()] == '/');
}

}  // namespace

std::vector<walk_root> walk_roots_of(item_list const& items, filter_patterns const& standard) {
  std::vector<walk_root> result;
  visit_items(items, [&](project_item& item) {
    if (item.kind() != item_kind::group)
      result.push_back({item.path(), item.kind() == item_kind::folder, item.patterns(standard)});
    return item.kind() == item_kind::group;
  });
  return result;
}

bool walk_would_take(std::vector<walk_root> const& roots, std::string const& path) {
  return std::any_of(roots.begin(), roots.end(), [&](walk_root const& root) {
    if (!root.is_folder) return path == root.path;
    if (!is_at_or_below(path, root.path) || path == root.path) return false;
    path_filters const filters(root.patterns);
    for (std::size_t slash = path.find('/', root.path.size() + 1); slash != path.npos;
         slash = path.find('/', slash + 1))
      if (!filters.folders.passes(std::string_view(path).substr(0, slash))) return false;
    return filters.files.passes(path);
  });
}

file_walk::file_walk(std::vector<walk_root> roots, walk_options const& options)
    : roots_(std::move(roots)), honours_gitignore_(options.honours_gitignore) {
  for (walk_root const& root : roots_)
    if (root.is_folder) real_roots_.push_back(real_path(root.path));
  std::erase(real_roots_, "");
  for (auto const& glob : options.included) included_.emplace_back(glob);
  for (auto const& glob : options.excluded) excluded_.emplace_back(glob);
}

bool file_walk::is_wanted(std::string const& path, bool is_folder) {
  auto const matches = [&](path::glob_t const& glob) { return glob.does_match(path); };
  if (std::any_of(excluded_.begin(), excluded_.end(), matches)) return false;
  if (!is_folder && !included_.empty() && std::none_of(included_.begin(), included_.end(), matches))
    return false;
  return !ignored_ || !ignored_->is_ignored(path, is_folder);
}

bool file_walk::is_followed(std::string const& link) {
  std::string const target = real_path(link);
  bool const is_inside =
      target.empty() || std::any_of(real_roots_.begin(), real_roots_.end(), [&](auto const& root) {
        return is_at_or_below(target, root) || is_at_or_below(root, target);
      });
  if (is_inside) return false;
  // Nor one that stands in a folder which is followed too.
  if (std::any_of(followed_.begin(), followed_.end(), [&](auto const& other) {
        return is_at_or_below(target, other) || is_at_or_below(other, target);
      }))
    return false;
  return followed_.insert(target).second;
}

void file_walk::enter(std::string const& path) {
  folder_listing listing = list_folder(path, *filters_);
  if (listing.error) errors_.push_back(*listing.error);
  levels_.push_back({path, std::move(listing.entries)});
  if (ignored_) ignored_->enter(path);
}

void file_walk::leave() {
  levels_.pop_back();
  if (ignored_) ignored_->leave();
}

bool file_walk::begin_root() {
  walk_root const& root = roots_[next_root_];
  ignored_.reset();
  if (!root.is_folder) return is_wanted(root.path, false);
  filters_.emplace(root.patterns);
  if (honours_gitignore_) ignored_.emplace(root.path);
  enter(root.path);
  return false;
}

bool file_walk::next(std::string& path) {
  for (;;) {
    if (levels_.empty()) {
      if (next_root_ == roots_.size()) return false;
      bool const is_file = begin_root();
      path = roots_[next_root_++].path;
      if (is_file && (roots_.size() == 1 || seen_.insert(path).second)) return true;
      continue;
    }
    level& top = levels_.back();
    if (top.at == top.entries.size()) {
      leave();
      continue;
    }
    folder_entry const& entry = top.entries[top.at++];
    path = top.path == "/" ? "/" + entry.name : top.path + "/" + entry.name;
    if (!is_wanted(path, entry.is_folder)) continue;
    if (!entry.is_folder) {
      if (roots_.size() == 1 || seen_.insert(path).second) return true;
    } else if (!entry.is_link || is_followed(path)) {
      enter(path);
    }
  }
}

}  // namespace projects
