#pragma once

#include <string>
#include <vector>

namespace documents {

/// A folder in /tmp, or in the one that TMPDIR names if that is as safe, in which others can't do
/// anything: Quirnote-UID, or one with a random number after that name where something else has it
/// already. It is made if need be, belongs to this user, has mode 0700 and is no link; as /tmp lets
/// no user rename what is another's, it stays so. "" with errno if none can be had.
std::string make_folder_in_tmp();

/// Those that are there.
std::vector<std::string> folders_in_tmp();

}  // namespace documents
