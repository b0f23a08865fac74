#pragma once

#include <cstddef>

namespace platform {

/// Opens /dev/null on those of the descriptors 0 to 2 that are closed, so that no file, socket or
/// pipe of ours gets a number to which messages are written. It can't be used in the direction of
/// that stream: reading and writing fail as they do on a closed one. To be called before anything
/// else is opened.
void occupy_standard_descriptors();

/// Writes all of it, and waits where another process has set the descriptor not to wait.
/// 0 or an errno.
int write_to_stream(int descriptor, char const* bytes, std::size_t size);

}  // namespace platform
