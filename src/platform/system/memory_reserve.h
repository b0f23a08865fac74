#pragma once

#include <cstddef>

namespace platform {

/// Memory released when an allocation fails: whatever is asked for then gets it, so that
/// small things continue and the user can be informed. From the first call on, a request that even
/// the reserve doesn't make possible throws std::bad_alloc, as ever.
void keep_memory_reserve();

/// For libraries that don't survive want of memory: throws std::bad_alloc unless so many bytes are
/// there and the reserve besides. What was got once stays at hand, so that this is cheap from the
/// second time on.
void require_spare_memory(std::size_t bytes);

/// Gives memory that was freed back to the system, where the allocator would keep it: after much
/// was needed for a short time. Takes some milliseconds. Any thread.
void return_freed_memory();

/// Sets the reserve aside again where it was used. False when memory is still short.
bool refill_memory_reserve();

}  // namespace platform
