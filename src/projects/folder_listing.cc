#include "projects/folder_listing.h"

#include "path/path.h"
#include "plist/key_order.h"
#include "projects/ignore_rules.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>

namespace projects {
namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t youth = 2 * second;          // of the coarsest dates that file systems keep
constexpr std::size_t most_matching = 200'000'000;  // bytes of patterns, each as often as names

std::int64_t nanoseconds(timespec const& time) {
  return std::int64_t{time.tv_sec} * second + time.tv_nsec;
}

folder_stamp stamp_of(struct stat const& info) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::int64_t const modified = nanoseconds(info.st_mtim);
  return {.device = info.st_dev,
          .inode = info.st_ino,
          .modified = modified,
          .is_young = nanoseconds(now) - modified < youth};
}

struct folder_closer {
  void operator()(DIR* folder) const { closedir(folder); }
};

// Nothing for what is neither a file nor a folder.
std::optional<folder_entry> entry_of(int folder, dirent const& found) {
  folder_entry entry{found.d_name, found.d_type == DT_DIR, found.d_type == DT_LNK};
  if (found.d_type == DT_DIR || found.d_type == DT_REG) return entry;
  if (found.d_type != DT_LNK && found.d_type != DT_UNKNOWN) return std::nullopt;
  struct stat info;
  if (found.d_type == DT_UNKNOWN) {
    if (fstatat(folder, found.d_name, &info, AT_SYMLINK_NOFOLLOW) != 0) return std::nullopt;
    entry.is_link = S_ISLNK(info.st_mode);
  }
  if (fstatat(folder, found.d_name, &info, 0) != 0) return std::nullopt;
  entry.is_folder = S_ISDIR(info.st_mode);
  return entry.is_folder || S_ISREG(info.st_mode) ? std::optional(entry) : std::nullopt;
}

}  // namespace

void sort_by_name(std::vector<folder_entry>& entries) {
  struct keyed {
    std::string key;
    folder_entry entry;
  };
  std::vector<keyed> all;
  all.reserve(entries.size());
  for (folder_entry& entry : entries)
    all.push_back({plist::lexicographic_key(entry.name), std::move(entry)});
  std::sort(all.begin(), all.end(), [](keyed const& a, keyed const& b) {
    int const order = a.key.compare(b.key);
    return order != 0 ? order < 0 : a.entry.name < b.entry.name;
  });
  for (std::size_t n = 0; n < all.size(); ++n) entries[n] = std::move(all[n].entry);
}

folder_listing list_folder(std::string const& path, path_filters const& filters) {
  folder_listing result;
  int const descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK);
  struct stat info;
  if (descriptor < 0 || fstat(descriptor, &info) != 0) {
    result.error = path::make_file_error("open", path, errno);
    if (descriptor >= 0) ::close(descriptor);
    return result;
  }
  // Before it is read, so that what changes meanwhile counts as a later change.
  result.stamp = stamp_of(info);
  std::unique_ptr<DIR, folder_closer> const folder(fdopendir(descriptor));
  if (folder == nullptr) {
    result.error = path::make_file_error("opendir", path, errno);
    ::close(descriptor);
    return result;
  }
  std::string whole = path == "/" ? path : path + "/";
  std::size_t const prefix = whole.size();
  for (;;) {
    errno = 0;
    dirent const* const found = readdir(folder.get());
    if (found == nullptr) break;
    std::string_view const name = found->d_name;
    if (name == "." || name == "..") continue;
    auto entry = entry_of(descriptor, *found);
    if (!entry) continue;
    whole.resize(prefix);
    whole += name;
    if ((entry->is_folder ? filters.folders : filters.files).passes(whole))
      result.entries.push_back(std::move(*entry));
  }
  if (errno != 0) result.error = path::make_file_error("readdir", path, errno);
  sort_by_name(result.entries);
  return result;
}

void mark_ignored(std::string const& path, std::vector<folder_entry>& entries) {
  ignore_stack rules(path);
  if (!rules.is_in_repository()) return;
  rules.enter(path);
  if (rules.size() == 0 || entries.size() > most_matching / rules.size()) return;
  for (folder_entry& entry : entries)
    entry.is_ignored = rules.is_ignored(path::join(path, entry.name), entry.is_folder);
}

std::optional<folder_stamp> stamp_of_folder(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return std::nullopt;
  return stamp_of(info);
}

bool leads_in_circle(std::string const& path) {
  struct stat target, above;
  if (::stat(path.c_str(), &target) != 0) return false;
  for (std::string at = path; at != "/" && !at.empty();) {
    at = path::parent(at);
    if (::stat(at.c_str(), &above) == 0 && above.st_dev == target.st_dev &&
        above.st_ino == target.st_ino)
      return true;
  }
  return false;
}

}  // namespace projects
