#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bundles/stubs.h"
#include "plist/value.h"

/// How the index of bundles stands in its file: MessagePack. What is kept for a path is packed by
/// itself, as a block of bytes in the root dictionary, so that reading the file costs little and
/// only what is asked for is unpacked.
///
///     { version: "2", pathContents: { path: block }, pathLastChanged: { path: nanoseconds } }
///
/// Behind it stands a CRC-32 of these bytes: a damaged name would otherwise pass for another.
///
/// Unpacking accepts any bytes; false when they don't have the expected form. The results are then
/// unspecified. Main thread only.
namespace bundles::index {

/// What the index holds for one path.
struct entry {
  std::int64_t changed = 0;  ///< nanoseconds since 1970, or `missing`
  std::string block;
};
using entries = std::unordered_map<std::string, entry>;

/// The stubs of the bundles in one directory, and of the items in one.
using bundle_stubs = std::vector<BundleStub>;
using item_stubs = std::vector<BundleItemStub>;

std::string pack_root(std::string_view version, entries const& content);
/// With another `version` than the given one the result is true, and `content` empty.
bool unpack_root(std::string_view bytes, std::string_view version, entries& content);

/// { uuid: path }, a list in order. The directory is what all paths begin with; it isn't stored.
std::string pack(bundle_stubs const& stubs, std::string_view directory);
bool unpack(std::string_view block, std::string_view directory, bundle_stubs& stubs);

/// { kind: [[path, keys, delta]] }
std::string pack(item_stubs const& stubs, std::string_view directory);
bool unpack(std::string_view block, std::string_view directory, item_stubs& stubs);

std::string pack(plist::value const& value, std::string_view directory);
bool unpack(std::string_view block, std::string_view directory, plist::value& value);

}  // namespace bundles::index
