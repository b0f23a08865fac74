#pragma once

#include <string>

namespace platform {

/// Moves a file or a folder to the desktop's trash, from which the user can put it back: that of
/// the home folder, or for what is on another volume the one at that volume's top. Returns 0 or an
/// errno; everything is then where it was.
int move_to_trash(std::string const& path);

}  // namespace platform
