#include "text/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace text {

namespace {

/// Calls `allocate` until it gives memory or nothing more can be freed, as operator new does.
template <typename Allocate>
void* allocated(void* failure, Allocate allocate) {
  while (true) {
    void* const memory = allocate();
    if (memory != failure) return memory;
    std::new_handler const free_some = std::get_new_handler();
    if (free_some == nullptr) throw std::bad_alloc();
    free_some();
  }
}

}  // namespace

void* allocate_pages(size_t bytes) {
  void* memory = allocated(MAP_FAILED, [bytes] {
    return mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
                -1, 0);
  });
  madvise(memory, bytes, MADV_HUGEPAGE);
  return memory;
}

void* allocate_from_heap(size_t bytes) {
  return allocated(nullptr, [bytes] { return std::malloc(bytes); });
}

void free_pages(void* memory, size_t bytes) noexcept {
  munmap(memory, bytes);
}

void discard_pages(void* memory, size_t used, size_t bytes) noexcept {
  size_t const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  size_t const kept = (used + page - 1) / page * page;
  if (kept < bytes) madvise(static_cast<char*>(memory) + kept, bytes - kept, MADV_DONTNEED);
}

void* reallocate_memory(void* memory, size_t old_bytes, size_t bytes) {
  if (bytes < paged_allocation) {
    return allocated(nullptr, [memory, bytes] { return std::realloc(memory, bytes); });
  }
  if (old_bytes >= paged_allocation) {
    return allocated(MAP_FAILED, [=] { return mremap(memory, old_bytes, bytes, MREMAP_MAYMOVE); });
  }
  void* const pages = allocate_pages(bytes);
  if (old_bytes != 0) std::memcpy(pages, memory, old_bytes);
  std::free(memory);
  return pages;
}

void free_memory(void* memory, size_t bytes) noexcept {
  if (bytes < paged_allocation)
    std::free(memory);
  else
    free_pages(memory, bytes);
}

}  // namespace text
