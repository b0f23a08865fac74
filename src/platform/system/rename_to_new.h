#pragma once

#include "platform/system/replace_file.h"

namespace platform {

/// Gives a file of the open folder another name there, unless something has that name: EEXIST. With
/// AT_FDCWD the names are paths. Returns 0 or an errno. Where the file system can't do that at once
/// a file gets both names for a moment, and of a folder another one's name is only looked for.
int rename_to_new(int folder, char const* from, char const* to, file_calls& calls);

/// Whether renameat2 gave this errno because the file system doesn't know the flag.
bool is_unsupported_rename(int code);

}  // namespace platform
