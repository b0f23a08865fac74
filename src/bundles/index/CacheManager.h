#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "bundles/index/index_format.h"

/// The index of bundles: what look-ups need of directories and files, so that a start doesn't open
/// every file of every bundle. What it has for a path holds as long as the path's modification time
/// is the same; for a directory one look thus decides for all files in it. That the content of such
/// a file has changed shows only if invalidateCacheForPath() is called. Main thread only.
///
///     if (auto stubs = cache.contentsForPath<item_stubs>(directory)) return *stubs;
///     auto const changed = CacheManager::lastDirectoryUpdateForPath(directory);
///     auto stubs = read(directory);
///     cache.setContents(stubs, directory, changed);
class CacheManager {
 public:
  static constexpr char const* cacheFormatVersion = "3";
  /// The time of a path at which nothing is.
  static constexpr std::int64_t distantFuture = INT64_MAX;

  /// Loads the file. An empty path keeps everything in memory.
  explicit CacheManager(std::string cacheFile);

  /// What was stored for the path, of the type with which it was stored: bundle_stubs, item_stubs
  /// or a property list. Nothing when there is none or the path has changed.
  template <typename T>
  std::optional<T> contentsForPath(std::string const& path) {
    auto const packed = packedContentsForPath(path);
    if (!packed) return std::nullopt;
    std::optional<T> contents(std::in_place);
    if (bundles::index::unpack(*packed, path, *contents)) return contents;
    reportDamage(path);
    return std::nullopt;
  }
  /// `changed` is the path's time before the contents were read, so that a change meanwhile shows.
  template <typename T>
  void setContents(T const& contents, std::string const& path, std::int64_t changed) {
    store(bundles::index::pack(contents, path), path, changed);
  }
  /// Keeps what there is for the path when the index is saved, though it has not been asked for.
  void keepPath(std::string_view path);
  /// Forgets the path in this process alone.
  void forgetPath(std::string_view path);
  /// Forgets the path and gives it a new modification time, for the indexes of other processes.
  void invalidateCacheForPath(std::string const& path);

  /// Reads the file again. One that can't be used is reported and counts as empty.
  void loadCache();
  /// Drops what was not asked for since the start, and writes the file if anything has changed.
  void saveCache();
  /// Forgets everything; the file stays as it is until saveCache().
  void flush();

  /// Nanoseconds since 1970, or distantFuture.
  static std::int64_t lastDirectoryUpdateForPath(std::string const& path);

 private:
  std::optional<std::string_view> packedContentsForPath(std::string const& path);
  void store(std::string const& contents, std::string const& path, std::int64_t changed);
  void reportDamage(std::string const& path);

  std::string cacheFile_;
  // What the entries borrow from: the file as it was read, and what was stored since.
  std::string bytes_;
  std::deque<std::string> stored_;
  bundles::index::entries entries_;
  bool isModified_ = false;
};
