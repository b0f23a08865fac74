#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"

/// Reading and writing the property lists of bundles. Main thread only, unless stated otherwise.
namespace bundles {

/// The dictionary in the file; nothing when the file can't be read, and that is complained
/// about. Any thread.
plist::value read_dictionary(std::string const& path);

/// Puts the new content in the place of the file's, so that readers, and a kill, find one
/// of both whole. False, after a complaint, on failure; `fault` then says why, with the path.
bool write_dictionary(std::string const& path, plist::dictionary const& content,
                      std::string* fault = nullptr);
bool write_file(std::string const& path, std::string_view bytes, std::string* fault = nullptr);

/// The values under `key` if they are strings, in an array.
std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key);

}  // namespace bundles
