#include "projects/file_batch.h"

#include "projects/abbreviation.h"

#include <algorithm>
#include <functional>

namespace projects {

std::string file_batch::path(index file) const {
  std::string result(folder(files_[file].folder));
  result += '/';
  return result += name(files_[file].name);
}

void file_batch::add(std::string_view path) {
  std::size_t const slash = path.rfind('/');
  std::string_view const folder = path.substr(0, slash == path.npos ? 0 : slash);
  // Files of a folder come one after the other, but for those of the folders in it.
  index place = folders();
  for (index const back = std::min<index>(place, 8); place > folders() - back;)
    if (folders_.at(--place) == folder) {
      files_.push_back({place, name_index(path.substr(slash + 1))});
      return;
    }
  folders_.add(folder);
  files_.push_back({folders() - 1, name_index(path.substr(slash + 1))});
}

std::size_t file_batch::slot_of(std::string_view name) const {
  for (std::size_t at = std::hash<std::string_view>()(name);; ++at) {
    std::size_t const slot = at & (table_.size() - 1);
    if (table_[slot] == 0 || names_.at(table_[slot] - 1) == name) return slot;
  }
}

void file_batch::grow_table() {
  table_.assign(std::max<std::size_t>(64, 2 * table_.size()), 0);
  for (index n = 0; n < names(); ++n) table_[slot_of(names_.at(n))] = n + 1;
}

file_batch::index file_batch::name_index(std::string_view name) {
  if (2 * names_.size() > table_.size()) grow_table();
  index& known = table_[slot_of(name)];
  if (known != 0) return known - 1;
  auto const begin = static_cast<index>(units_.size());
  append_searched(name, units_);
  std::u16string_view const added = std::u16string_view(units_).substr(begin);
  searched_.push_back({letter_bits(added), begin,
                       static_cast<std::uint32_t>(std::count(added.begin(), added.end(), u' '))});
  names_.add(name);
  known = names();
  return known - 1;
}

std::u16string_view file_batch::searched(index name) const {
  index const begin = searched_[name].begin;
  return std::u16string_view(units_).substr(begin, searched_[name + 1].begin - begin);
}

void file_batch::finish() {
  searched_.push_back({0, static_cast<index>(units_.size()), 0});
  first_.assign(names() + std::size_t{2}, 0);
  for (file const& each : files_) ++first_[each.name + 2];
  for (std::size_t n = 2; n < first_.size(); ++n) first_[n] += first_[n - 1];
  by_name_.resize(files_.size());
  for (index n = 0; n < size(); ++n) by_name_[first_[files_[n].name + 1]++] = n;
  first_.pop_back();
  files_.shrink_to_fit();
  names_.finish();
  folders_.finish();
  searched_.shrink_to_fit();
  units_.shrink_to_fit();
}

std::pair<file_batch::index const*, file_batch::index const*> file_batch::files_called(
    std::string_view name) const {
  if (table_.empty()) return {nullptr, nullptr};
  index const found = table_[slot_of(name)];
  if (found == 0) return {nullptr, nullptr};
  return {by_name_.data() + first_[found - 1], by_name_.data() + first_[found]};
}

}  // namespace projects
