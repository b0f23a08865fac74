#pragma once

#include <string>

namespace windows {

/// Asks the user whether a large file is wanted as a text. True without a question for all others.
bool confirm_large_file(std::string const& path);

}  // namespace windows
