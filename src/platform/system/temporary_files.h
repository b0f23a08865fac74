#pragma once

#include <string>

#include "platform/system/replace_file.h"

/// Files that are written to take another one's place, beside it: ".NAME.quirnote-NUMBER". If the
/// program is killed meanwhile they stay behind, and are known by their names. The writer
/// holds it, so that no other process takes it for such a one.
namespace platform {

/// A name of that form that is unlikely to be taken.
std::string temporary_name(std::string const& name);

/// Tells other programs that the file is being written, until the descriptor is closed.
void hold_temporary(int descriptor);

/// Whether an open file is one of our own that has been left alone for a minute and that nobody
/// holds.
bool is_left_over(int descriptor);

/// Removes those that are left over of `name` in the open folder.
void remove_left_over_temporaries(int folder, std::string const& name, file_calls& calls);

}  // namespace platform
