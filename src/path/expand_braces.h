#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace path {

/// All the texts that one with alternatives in braces stands for, the first group varying slowest:
///
///     path::expand_braces("a{b,c}d{e,f}")  // abde, abdf, acde, acdf
///
/// Groups nest, and an alternative may be empty. A brace that belongs to no group of at least two
/// alternatives is plain text, and so is one of "{,}\" after a backslash. A text whose
/// alternatives come to more than `max_bytes` is not expanded: the result is that text alone. Any
/// thread.
std::vector<std::string> expand_braces(std::string_view text,
                                       std::size_t max_bytes = std::size_t{16} << 20);

}  // namespace path
