#pragma once

#include "plist/value.h"

#include <cstdint>
#include <string>
#include <vector>

/// What a drop that is no text becomes as text.
namespace dropped_content {

/// A file of more bytes is inserted only if the user says so.
constexpr std::int64_t large_file = 0x100000;

bool is_folder(std::string const& path);

/// The texts of the files one after the other; of several, each with a header that names it. A
/// folder stands for its path, and so does every file with `as_paths`; each path after the first is
/// on a line of its own. Asks before large files, and tells what can't be read.
std::vector<char16_t> text_of_files(std::vector<std::string> const& paths, bool as_paths);

/// What the user's command WynTextViewPrettyPrintColorCommand makes of a colour, an array of red,
/// green and blue from 0 to 1.
std::u16string text_of_color(plist::value const& color);

}  // namespace dropped_content
