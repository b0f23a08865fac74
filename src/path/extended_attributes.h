#pragma once

#include <string>

namespace path {

/// Gives the open file `to` the extended attributes of the file at `from`, access control lists
/// included, and no others. 0 if it has just these now, or file systems here have none; else an
/// errno.
int copy_extended_attributes(std::string const& from, int to);

}  // namespace path
