#pragma once

#include <cstdint>

namespace encoding {

/// How many bytes the units in [first, last) are as UTF-8: surrogates are three each, or with
/// `pairs` four for a high one and a low one after it. Line ends are one byte.
std::uint64_t utf8_size(char16_t const* first, char16_t const* last, bool pairs);

}  // namespace encoding
