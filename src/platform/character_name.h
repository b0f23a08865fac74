#pragma once

#include <string>

namespace platform {

/// What Unicode calls a character, such as "ZERO WIDTH SPACE"; empty for what has no name.
std::string character_name(char32_t c);

}  // namespace platform
