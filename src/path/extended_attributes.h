#pragma once

#include <string>

namespace path {

/// Gives the open file `to` the extended attributes of the file at `from`, access control lists
/// included, as far as both file systems have them and the user may set them.
void copy_extended_attributes(std::string const& from, int to);

}  // namespace path
