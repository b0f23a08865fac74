#include "app/recent_files.h"

#include "path/path.h"
#include "platform/log.h"
#include "platform/system/folder_lock.h"
#include "platform/system/library_folders.h"
#include "platform/system/replace_file.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"
#include "settings/store.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace app {
namespace {

std::size_t limit() {
  return static_cast<std::size_t>(settings::store().integer("NSRecentDocumentsLimit"));
}

}  // namespace

recent_files::recent_files(std::string path) : list_path_(std::move(path)) {}

recent_files::~recent_files() {
  if (!waiting_.empty()) store();
}

void recent_files::add(std::string const& path) {
  change([path](std::vector<std::string>& list) {
    std::erase(list, path);
    list.insert(list.begin(), path);
    if (list.size() > limit()) list.resize(limit());
  });
}

void recent_files::remove(std::string const& path) {
  change([path](std::vector<std::string>& list) { std::erase(list, path); });
}

void recent_files::clear() {
  change([](std::vector<std::string>& list) { list.clear(); });
}

void recent_files::change(list_edit edit) {
  if (list_path_.empty()) return edit(in_memory_);
  waiting_.push_back(std::move(edit));
  store();
}

/// Under a lock, so that what other processes add meanwhile isn't lost.
void recent_files::store() {
  std::string const folder = path::parent(list_path_);
  if (!platform::make_folders(folder)) return report("can't be written", errno);
  platform::folder_lock const lock(folder);
  if (lock.error()) return report("can't be locked", lock.error());
  std::vector<std::string> list;
  state const found = read(list);
  if (found == state::unreadable || (found == state::damaged && !set_aside())) return;
  for (list_edit const& edit : waiting_) edit(list);
  if (write(list)) waiting_.clear();
}

void recent_files::report(char const* what, int error) const {
  report(std::string(what) + ": " + std::strerror(error));
}

void recent_files::report(std::string const& what) const {
  std::string const message = list_path_ + ": " + what;
  if (reported_.insert(message).second) platform::log(message);
}

std::vector<std::string> recent_files::load() const {
  if (list_path_.empty()) return in_memory_;
  std::vector<std::string> list;
  read(list);
  for (list_edit const& edit : waiting_) edit(list);
  return list;
}

recent_files::state recent_files::read(std::vector<std::string>& list) const {
  std::string contents;
  int const error = platform::read_file(list_path_, contents, platform::file_calls::system());
  if (error == ENOENT) return state::readable;
  if (error != 0) {
    report("can't be read", error);
    return state::unreadable;
  }
  auto const stored = plist::read_xml(contents, platform::largest_small_file);
  if (stored.error || !stored.value.as_array()) return state::damaged;
  for (plist::value const& entry : stored.value.elements())
    if (auto const* data = entry.as_data()) list.emplace_back(data->begin(), data->end());
  return state::readable;
}

/// Its names may be all that the user has to find files by.
bool recent_files::set_aside() {
  std::string kept;
  int const error = platform::set_aside(list_path_, kept, platform::file_calls::system());
  if (error == 0)
    report("is damaged, and is kept as " + kept);
  else
    report("is damaged, and can't be kept under another name", error);
  return error == 0;
}

bool recent_files::write(std::vector<std::string> const& paths) {
  // As data, since a file name may hold any bytes.
  plist::array list;
  for (std::string const& p : paths) list.push_back(plist::data(p.begin(), p.end()));
  auto& calls = platform::file_calls::system();
  platform::remove_left_over_temporaries(list_path_, calls);
  int const error = platform::replace_file(list_path_, plist::write_xml(list).text, calls);
  if (error != 0) report("can't be written", error);
  return error == 0;
}

}  // namespace app
