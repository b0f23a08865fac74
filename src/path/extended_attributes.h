#pragma once

#include <sys/types.h>

#include <string>

namespace path {

/// Gives the open file `to` the extended attributes of the file at `from`, access control lists
/// included, and no others. 0 if it has just these now, or file systems here have none; else an
/// errno.
int copy_extended_attributes(std::string const& from, int to);

/// The mode that gives a file without an access control list no more than the file at `path`, which
/// has this `mode`, gives by its list: there the bits of the group show what the list gives to
/// anybody, not what it gives to the group.
mode_t mode_without_access_list(std::string const& path, mode_t mode);

}  // namespace path
