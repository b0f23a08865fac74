#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Bytes as they stand in URLs: ASCII letters, digits and those in `plain` as they are, all others
/// as "%" with two hexadecimal digits. Any thread.
std::string percent_encoded(std::string_view bytes, std::string_view plain);

}  // namespace platform
