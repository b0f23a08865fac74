#pragma once

#include <string>

namespace platform {

/// A fresh random identifier in upper-case text form.
std::string stringWithUUID();

}  // namespace platform
