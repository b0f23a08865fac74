#include "bundles/index/bundle_scan.h"

#include "bundles/check/type_check.h"
#include "bundles/files/item_file.h"
#include "bundles/files/item_kinds.h"
#include "path/tree.h"
#include "platform/log.h"

namespace bundles {
namespace {

constexpr char const* info_file = "/info.plist";

bool has_uuid(plist::value const& dictionary) {
  auto const* const uuid = dictionary["uuid"].as_string();
  return uuid != nullptr && !uuid->empty();
}

}  // namespace

plist::value bundle_info(CacheManager& cache, std::string const& path) {
  if (auto cached = cache.contentsForPath<plist::value>(path)) return *cached;
  auto const changed = CacheManager::lastDirectoryUpdateForPath(path);
  plist::value const info = read_dictionary(path);
  if (!info) return {};
  if (!has_uuid(info)) {
    platform::log_once(path + ": no uuid");
    return {};
  }
  complain_of_types(info, item_kind::bundle, path);
  cache.setContents(info, path, changed);
  return info;
}

plist::value bundle_head(CacheManager& cache, std::string const& path) {
  if (auto cached = cache.contentsForPath<index::info_head>(path)) return cached->content;
  return bundle_info(cache, path);
}

index::bundle_stubs bundles_in(CacheManager& cache, std::string const& directory) {
  if (auto cached = cache.contentsForPath<index::bundle_stubs>(directory))
    return std::move(*cached);
  auto const changed = CacheManager::lastDirectoryUpdateForPath(directory);
  index::bundle_stubs stubs;
  bool complete = true;
  for (std::string const& name : path::visible_names(directory)) {
    if (!is_bundle_directory(name)) continue;
    std::string const path = directory + "/" + name + info_file;
    plist::value const info = bundle_info(cache, path);
    if (info)
      stubs.push_back({*info["uuid"].as_string(), path});
    else
      complete = false;
  }
  if (complete) cache.setContents(stubs, directory, changed);
  return stubs;
}

index::item_stubs items_in(CacheManager& cache, std::string const& bundle, item_kind kind) {
  std::string const directory = bundle + "/" + std::string(KindToDirectory(kind));
  if (auto cached = cache.contentsForPath<index::item_stubs>(directory)) return std::move(*cached);
  auto const changed = CacheManager::lastDirectoryUpdateForPath(directory);
  index::item_stubs stubs;
  bool complete = true;
  for (std::string const& name : path::visible_names(directory)) {
    if (!is_item_file(name)) continue;
    std::string const path =
        directory + "/" + name + (kind == item_kind::file_template ? info_file : "");
    plist::value const content = read_dictionary(path);
    auto stub = content ? stub_from(content, path, kind) : std::nullopt;
    if (stub)
      stubs.push_back(std::move(*stub));
    else
      complete = false;
  }
  if (complete) cache.setContents(stubs, directory, changed);
  return stubs;
}

}  // namespace bundles
