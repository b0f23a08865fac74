#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Bytes as they stand in URLs: ASCII letters, digits and those in `plain` as they are, all others
/// as "%" with two hexadecimal digits. Any thread.
std::string percent_encoded(std::string_view bytes, std::string_view plain);

/// The bytes again. Nothing if a "%" has no two hexadecimal digits after it.
std::optional<std::string> percent_decoded(std::string_view text);

/// The fields of the query of a URL, NAME=VALUE joined by "&"; of a name that comes twice the last
/// counts. Nothing if a value can't be decoded.
std::optional<std::map<std::string, std::string, std::less<>>> query_fields(std::string_view query);

}  // namespace platform
