#pragma once

#include <string_view>

#include "plist/value.h"

namespace plist {

/// Reads the text dialect: strings, integers, arrays in round brackets, dictionaries in braces.
///
///     { name = 'Plain Text'; fileTypes = ( 'txt' ); }  // comments too
///
/// `text` must hold one value and nothing after it, and its strings must be UTF-8. On failure the
/// result is nothing and `*errorOut`, if given, becomes a dictionary of `info` (what is wrong), and
/// mostly `line` and `column` (counted from 1; a column is a byte, tabs reach to the next multiple
/// of 8). Containers nested deeper than max_depth are an error, integers saturate at 64 bits. Main
/// thread only.
value convert(std::string_view text, dictionary* errorOut = nullptr);

}  // namespace plist
