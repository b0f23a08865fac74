#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bundles/index/stubs.h"
#include "plist/value.h"

/// How the index of bundles stands in its file: MessagePack. What is kept for a path is packed by
/// itself, as a block of bytes in the root dictionary, so that reading the file costs little and
/// only what is asked for is unpacked.
///
///     { version: "3", pathContents: { path: block }, pathLastChanged: { path: nanoseconds } }
///
/// A block begins with a CRC-32 of path, time and content: a damaged name would otherwise pass for
/// another.
///
/// Unpacking accepts any bytes; false when they don't have the expected form. The results are then
/// unspecified. Main thread only.
namespace bundles::index {

/// What the index holds for one path.
struct entry {
  std::int64_t changed = 0;  ///< nanoseconds since 1970, or `missing`
  std::string_view block;
  bool is_used = false;  ///< it has been asked for since the start
};
/// Paths and blocks belong to the caller.
using entries = std::unordered_map<std::string_view, entry>;

/// The stubs of the bundles in one directory, and of the items in one.
using bundle_stubs = std::vector<BundleStub>;
using item_stubs = std::vector<BundleItemStub>;
/// An info.plist of which `mainMenu` and `ordering` are left empty: the most of it by far, and a
/// start needs neither.
struct info_head {
  plist::value content;
};

std::string pack_root(std::string_view version, entries const& content);
/// With another `version` than the given one the result is true, and `content` empty; `found` is
/// the version. What is in `content` borrows from `bytes`.
bool unpack_root(std::string_view bytes, std::string_view version, entries& content,
                 std::string* found = nullptr);

/// Packed content as a block, and back: nothing for one that is damaged.
std::string block_with(std::string_view content, std::string_view path, std::int64_t changed);
std::optional<std::string_view> content_of(std::string_view block, std::string_view path,
                                           std::int64_t changed);

/// { uuid: path }, a list in order. The directory is what all paths begin with; it isn't stored.
std::string pack(bundle_stubs const& stubs, std::string_view directory);
bool unpack(std::string_view content, std::string_view directory, bundle_stubs& stubs);

/// { kind: [[path, keys, more]] }
std::string pack(item_stubs const& stubs, std::string_view directory);
bool unpack(std::string_view content, std::string_view directory, item_stubs& stubs);

std::string pack(plist::value const& value, std::string_view directory);
bool unpack(std::string_view content, std::string_view directory, plist::value& value);
bool unpack(std::string_view content, std::string_view directory, info_head& head);

}  // namespace bundles::index
