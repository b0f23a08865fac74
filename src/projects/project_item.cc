#include "projects/project_item.h"

#include "path/path.h"

#include <algorithm>
#include <iterator>

namespace projects {
namespace {

std::vector<std::string_view> components_of(std::string_view path) {
  std::vector<std::string_view> result;
  while (!path.empty()) {
    std::size_t const slash = std::min(path.find('/'), path.size());
    if (slash != 0) result.push_back(path.substr(0, slash));
    path.remove_prefix(std::min(slash + 1, path.size()));
  }
  return result;
}

}  // namespace

project_item::project_item(item_kind kind, std::string name, reference own)
    : kind_(kind),
      name_(std::move(name)),
      own_(std::make_unique<reference>(std::move(own))),
      holder_(kind == item_kind::file ? nullptr : std::make_unique<holder>()) {}

project_item::project_item(folder_entry entry)
    : is_link(entry.is_link),
      is_ignored(entry.is_ignored),
      kind_(entry.is_folder ? item_kind::folder : item_kind::file),
      name_(std::move(entry.name)),
      holder_(entry.is_folder ? std::make_unique<holder>() : nullptr) {}

std::string project_item::path() const {
  if (own_) return own_->path;
  std::string const above = parent_->path();
  return (above == "/" ? above : above + "/") + name_;
}

filter_patterns project_item::patterns(filter_patterns const& standard) const {
  project_item const* at = this;
  while (at->own_ == nullptr) at = at->parent_;
  return {at->own_->file_pattern.value_or(standard.files),
          at->own_->folder_pattern.value_or(standard.folders)};
}

item_list const& project_item::children() const {
  static item_list const none;
  return holder_ ? holder_->children : none;
}

void project_item::set_children(item_list children) {
  for (auto const& child : children) child->parent_ = this;
  holder_->children = std::move(children);
}

void project_item::insert(std::size_t index, std::unique_ptr<project_item> child) {
  auto& all = holder_->children;
  child->parent_ = this;
  all.insert(std::next(all.begin(), static_cast<std::ptrdiff_t>(std::min(index, all.size()))),
             std::move(child));
}

std::unique_ptr<project_item> project_item::remove(std::size_t index) {
  auto& all = holder_->children;
  auto removed = std::move(all[index]);
  all.erase(std::next(all.begin(), static_cast<std::ptrdiff_t>(index)));
  removed->parent_ = nullptr;
  return removed;
}

reading project_item::state() const {
  return holder_ ? holder_->state : reading::read;
}

std::optional<path::file_error> const& project_item::error() const {
  static std::optional<path::file_error> const none;
  return holder_ ? holder_->error : none;
}

folder_stamp const& project_item::stamp() const {
  static folder_stamp const none;
  return holder_ ? holder_->stamp : none;
}

void project_item::set_reading(reading state, folder_stamp stamp,
                               std::optional<path::file_error> error) {
  holder_->state = state;
  holder_->stamp = stamp;
  holder_->error = std::move(error);
}

bool project_item::end_look(std::uint32_t number) {
  if (number <= holder_->ended) return false;
  holder_->ended = number;
  return true;
}

std::weak_ptr<char> project_item::lifetime() {
  if (!holder_->lives) holder_->lives = std::make_shared<char>();
  return holder_->lives;
}

void project_item::set_watch(std::unique_ptr<platform::file_watcher::token> watch) {
  holder_->watch = std::move(watch);
}

bool project_item::is_watched() const {
  return holder_ && holder_->watch;
}

void visit_items(item_list const& items, std::function<bool(project_item&)> const& visit) {
  for (auto const& item : items)
    if (visit(*item)) visit_items(item->children(), visit);
}

std::string relative_path(std::string const& path, std::string const& folder) {
  auto const to = components_of(path), from = components_of(folder);
  auto const [a, b] = std::mismatch(to.begin(), to.end(), from.begin(), from.end());
  if (a == to.begin()) return path;
  std::string result;
  for (auto up = b; up != from.end(); ++up) result += "../";
  for (auto down = a; down != to.end(); ++down) result.append(*down) += '/';
  if (result.empty()) return ".";
  result.pop_back();
  return result;
}

}  // namespace projects
