#include "bundles/index/CacheManager.h"

#include "path/path.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

void complain_of(std::string const& index_file, std::string const& fault) {
  platform::log_once(index_file + ": " + fault + ", it is made anew");
}

}  // namespace

CacheManager::CacheManager(std::string cacheFile) : cacheFile_(std::move(cacheFile)) {
  loadCache();
}

std::int64_t CacheManager::lastDirectoryUpdateForPath(std::string const& path) {
  struct stat info;
  if (::stat(path.c_str(), &info) != 0) return distantFuture;
  return info.st_mtim.tv_sec * INT64_C(1000000000) + info.st_mtim.tv_nsec;
}

std::optional<std::string_view> CacheManager::packedContentsForPath(std::string const& path) {
  auto const found = entries_.find(path);
  if (found == entries_.end()) return std::nullopt;
  auto& [changed, block, is_used] = found->second;
  is_used = true;
  if (changed != lastDirectoryUpdateForPath(path)) return std::nullopt;
  auto const contents = bundles::index::content_of(block, path, changed);
  if (!contents) reportDamage(path);
  return contents;
}

void CacheManager::store(std::string const& contents, std::string const& path,
                         std::int64_t changed) {
  entries_.erase(path);
  std::string_view const key = stored_.emplace_back(path);
  std::string_view const block =
      stored_.emplace_back(bundles::index::block_with(contents, path, changed));
  entries_.emplace(key, bundles::index::entry{changed, block, true});
  isModified_ = true;
}

void CacheManager::keepPath(std::string_view path) {
  auto const found = entries_.find(path);
  if (found != entries_.end()) found->second.is_used = true;
}

void CacheManager::forgetPath(std::string_view path) {
  if (entries_.erase(path) != 0) isModified_ = true;
}

void CacheManager::reportDamage(std::string const& path) {
  complain_of(cacheFile_, "damaged");
  entries_.erase(path);
  isModified_ = true;
}

void CacheManager::invalidateCacheForPath(std::string const& path) {
  entries_.erase(path);
  ::utimensat(AT_FDCWD, path.c_str(), nullptr, 0);
  isModified_ = true;
}

void CacheManager::loadCache() {
  flush();
  isModified_ = false;
  if (cacheFile_.empty()) return;
  int const error = platform::read_file(cacheFile_, bytes_, platform::file_calls::system());
  if (error != 0 && error != ENOENT) platform::log_once(cacheFile_ + ": " + std::strerror(error));
  if (error != 0) return;
  std::string version;
  bool const is_sound = bundles::index::unpack_root(bytes_, cacheFormatVersion, entries_, &version);
  if (is_sound && version == cacheFormatVersion) return;
  flush();
  complain_of(cacheFile_, is_sound ? "of version " + version : "damaged");
}

void CacheManager::saveCache() {
  auto const unused = std::erase_if(entries_, [](auto const& e) { return !e.second.is_used; });
  if (unused == 0 && !isModified_) return;
  if (cacheFile_.empty() || !platform::make_folders(path::parent(cacheFile_))) return;
  platform::remove_left_over_temporaries(cacheFile_, platform::file_calls::system());
  int const error =
      platform::replace_file(cacheFile_, bundles::index::pack_root(cacheFormatVersion, entries_),
                             platform::file_calls::system());
  if (error != 0) return platform::log_once(cacheFile_ + ": " + std::strerror(error));
  isModified_ = false;
}

void CacheManager::flush() {
  entries_.clear();
  stored_.clear();
  bytes_.clear();
  isModified_ = true;
}
