#include "app/recent_files.h"

#include "path/file_system.h"
#include "path/path.h"
#include "platform/library_folders.h"
#include "platform/replace_file.h"
#include "platform/user_defaults.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <algorithm>

namespace {

// The user's limit, or what a menu can show.
std::size_t limit() {
  std::int64_t const wanted = platform::user_defaults::standard().integer("NSRecentDocumentsLimit");
  return wanted > 0 ? static_cast<std::size_t>(wanted) : 25;
}

}  // namespace

recent_files::recent_files(std::string path) : list_path_(std::move(path)) {}

std::vector<std::string> recent_files::paths() const {
  std::vector<std::string> list = load();
  std::erase_if(list, [](std::string const& p) { return !path::exists(p); });
  return list;
}

void recent_files::add(std::string const& path) {
  std::vector<std::string> list = load();
  std::erase(list, path);
  list.insert(list.begin(), path);
  if (list.size() > limit()) list.resize(limit());
  store(list);
}

void recent_files::clear() {
  store({});
}

std::vector<std::string> recent_files::load() const {
  if (list_path_.empty()) return in_memory_;
  std::string contents;
  if (platform::read_file(list_path_, contents, platform::file_calls::system()) != 0) return {};
  std::vector<std::string> list;
  plist::value const stored = plist::read_xml(contents).value;
  for (plist::value const& entry : stored.elements())
    if (auto const* data = entry.as_data()) list.emplace_back(data->begin(), data->end());
  return list;
}

void recent_files::store(std::vector<std::string> const& paths) {
  if (list_path_.empty()) {
    in_memory_ = paths;
    return;
  }
  // As data, since a file name may hold any bytes.
  plist::array list;
  for (std::string const& p : paths) list.push_back(plist::data(p.begin(), p.end()));
  platform::make_folders(path::parent(list_path_));
  platform::replace_file(list_path_, plist::write_xml(list).text, platform::file_calls::system());
}
