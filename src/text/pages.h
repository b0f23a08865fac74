#pragma once

#include <cstddef>
#include <new>

namespace text {

/// Allocations of this many bytes and more come straight from the kernel with huge pages asked for:
/// a line of 100 MB would otherwise cost 25,000 page faults each time that it is copied.
constexpr size_t paged_allocation = size_t{4} << 20;

/// Memory for `bytes`, aligned for any type; throws std::bad_alloc.
void* allocate_pages(size_t bytes);
/// `bytes` is what was asked for.
void free_pages(void* memory, size_t bytes) noexcept;
/// Gives back the whole pages behind the first `used` bytes; the address range stays reserved.
void discard_pages(void* memory, size_t used, size_t bytes) noexcept;

/// A standard allocator that uses pages for large arrays.
template <typename T>
struct page_allocator {
  using value_type = T;

  page_allocator() = default;
  template <typename U>
  page_allocator(page_allocator<U> const&) noexcept {}

  T* allocate(size_t count) {
    size_t const bytes = count * sizeof(T);
    return static_cast<T*>(bytes < paged_allocation ? ::operator new(bytes)
                                                    : allocate_pages(bytes));
  }
  void deallocate(T* memory, size_t count) noexcept {
    size_t const bytes = count * sizeof(T);
    if (bytes < paged_allocation)
      ::operator delete(memory);
    else
      free_pages(memory, bytes);
  }
  bool operator==(page_allocator const&) const = default;
};

}  // namespace text
