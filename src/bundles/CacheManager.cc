#include "bundles/CacheManager.h"

#include "bundles/item_file.h"
#include "path/path.h"
#include "platform/library_folders.h"
#include "platform/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

using bundles::complain;

CacheManager::CacheManager(std::string cacheFile) : cacheFile_(std::move(cacheFile)) {
  loadCache();
}

std::int64_t CacheManager::lastDirectoryUpdateForPath(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0) return distantFuture;
  return info.st_mtim.tv_sec * INT64_C(1000000000) + info.st_mtim.tv_nsec;
}

std::string const* CacheManager::blockForPath(std::string const& path) {
  didAccess_.insert(path);
  auto const found = entries_.find(path);
  if (found == entries_.end()) return nullptr;
  return found->second.changed == lastDirectoryUpdateForPath(path) ? &found->second.block : nullptr;
}

void CacheManager::storeBlock(bundles::index::entry entry, std::string const& path) {
  didAccess_.insert(path);
  entries_[path] = std::move(entry);
  isModified_ = true;
}

void CacheManager::reportDamage(std::string const& path) {
  complain(cacheFile_ + ": damaged, it is made anew");
  entries_.erase(path);
  isModified_ = true;
}

void CacheManager::invalidateCacheForPath(std::string const& path) {
  entries_.erase(path);
  ::utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
  isModified_ = true;
}

void CacheManager::loadCache() {
  entries_.clear();
  if (cacheFile_.empty()) return;
  std::string bytes;
  int const error = platform::read_file(cacheFile_, bytes, platform::file_calls::system());
  if (error != 0 && error != ENOENT) complain(cacheFile_ + ": " + std::strerror(error));
  if (error != 0) return;
  if (bundles::index::unpack_root(bytes, cacheFormatVersion, entries_)) return;
  entries_.clear();
  complain(cacheFile_ + ": damaged, it is made anew");
}

void CacheManager::saveCache() {
  auto const unused =
      std::erase_if(entries_, [&](auto const& e) { return !didAccess_.contains(e.first); });
  if (unused == 0 && !isModified_) return;
  if (cacheFile_.empty() || !platform::make_folders(path::parent(cacheFile_))) return;
  int const error =
      platform::replace_file(cacheFile_, bundles::index::pack_root(cacheFormatVersion, entries_),
                             platform::file_calls::system());
  if (error != 0) return complain(cacheFile_ + ": " + std::strerror(error));
  isModified_ = false;
}

void CacheManager::flush() {
  entries_.clear();
  didAccess_.clear();
  isModified_ = true;
}
