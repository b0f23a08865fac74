#pragma once

#include <string>

/// A fresh random identifier in upper-case text form.
std::string stringWithUUID();
