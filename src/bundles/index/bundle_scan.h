#pragma once

#include <string>
#include <string_view>

#include "bundles/index/CacheManager.h"
#include "bundles/index/index_format.h"

/// What stands in the directories of bundles: from the index where it holds, else from the files.
/// A file that can't be used is complained about and passed over, and a directory with such a file
/// is read again at each start, so that a repaired file is seen. Main thread only.
namespace bundles {

/// The dictionary of an info.plist; nothing when it can't be read or has no `uuid`.
plist::value bundle_info(CacheManager& cache, std::string const& path);

/// The same, but `mainMenu` and `ordering` may be empty; much cheaper where the index holds.
plist::value bundle_head(CacheManager& cache, std::string const& path);

/// The bundles in a directory of the search path, by name.
index::bundle_stubs bundles_in(CacheManager& cache, std::string const& directory);

/// The items of a kind in a bundle, by name.
index::item_stubs items_in(CacheManager& cache, std::string const& directory, item_kind kind);

}  // namespace bundles
