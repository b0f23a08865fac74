#pragma once

#include <cstddef>

#include "encoding/charset.h"

namespace encoding {

/// As `estimate`, for bytes in memory: the same answer at about the speed of reading them.
charset_t estimate_buffer(unsigned char const* bytes, std::size_t size);

}  // namespace encoding
