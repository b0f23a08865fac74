#include "text/pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

namespace text {

void* allocate_pages(size_t bytes) {
  void* memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  madvise(memory, bytes, MADV_HUGEPAGE);
  return memory;
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
    void* const moved = std::realloc(memory, bytes);
    if (moved == nullptr) throw std::bad_alloc();
    return moved;
  }
  if (old_bytes >= paged_allocation) {
    void* const moved = mremap(memory, old_bytes, bytes, MREMAP_MAYMOVE);
    if (moved == MAP_FAILED) throw std::bad_alloc();
    return moved;
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
