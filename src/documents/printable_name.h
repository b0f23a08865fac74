#pragma once

#include <string>

#include "platform/shown_characters.h"

namespace documents {

/// The last component of `path`, fit to be shown: see `printable`.
std::string printable_name(std::string const& path);

/// A path as valid UTF-8 on one line: control characters become the symbols for them, and bytes
/// that are no UTF-8 and what else platform::is_shown_as_it_is refuses U+FFFD.
std::string printable(std::string const& path);

using platform::quoted;

}  // namespace documents
