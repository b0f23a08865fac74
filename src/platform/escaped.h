#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Text from elsewhere, such as the names of files, as it may stand in a line of output or on a
/// terminal: control characters, bytes that are no UTF-8 and marks that turn the direction of
/// writing come as in C: "\n", "\x9B". Any thread.
std::string escaped(std::string_view text);

/// The same for a name that is to be told from any other: a backslash comes as two.
std::string escaped_name(std::string_view name);

}  // namespace platform
