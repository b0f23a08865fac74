#pragma once

#include <cstddef>

namespace text {

/// Allocations of this many bytes and more come straight from the kernel with huge pages asked for:
/// a line of 100 MB would otherwise cost 25,000 page faults each time that it is copied.
constexpr size_t paged_allocation = size_t{4} << 20;

/// Memory for `bytes`, aligned for any type; throws std::bad_alloc.
void* allocate_pages(size_t bytes);
/// The same from malloc, to be given to free or realloc.
void* allocate_from_heap(size_t bytes);
/// `bytes` is what was asked for.
void free_pages(void* memory, size_t bytes) noexcept;
/// Gives back the whole pages after the first `used` bytes; the address range stays reserved.
void discard_pages(void* memory, size_t used, size_t bytes) noexcept;

/// Memory that is pages from `paged_allocation` bytes on and comes from malloc below that. Resizes
/// what is at `memory` (null: nothing yet), keeping its content; throws std::bad_alloc, and then
/// the old memory stays.
void* reallocate_memory(void* memory, size_t old_bytes, size_t bytes);
void free_memory(void* memory, size_t bytes) noexcept;

}  // namespace text
