#pragma once

#include <string>

namespace documents {

/// The last component of `path`, fit to be shown: see `printable`.
std::string printable_name(std::string const& path);

/// A path as valid UTF-8 on one line: bytes that are no UTF-8 become U+FFFD, and control characters
/// the symbols for them.
std::string printable(std::string const& path);

/// `name` between the typographic quotation marks of messages.
std::string quoted(std::string const& name);

}  // namespace documents
