#include "platform/system/memory_reserve.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace platform {
namespace {

// So large that it is mapped by itself, and its end gives room to requests of any kind.
constexpr std::size_t reserve_size = std::size_t{16} << 20;

std::atomic<void*> reserve = nullptr;

void give_up_reserve() {
  void* const memory = reserve.exchange(nullptr);
  if (memory == nullptr) throw std::bad_alloc();
  std::free(memory);
}

}  // namespace

void keep_memory_reserve() {
  refill_memory_reserve();
  std::set_new_handler(give_up_reserve);
}

void require_spare_memory(std::size_t bytes) {
  bool const is_kept = std::get_new_handler() == give_up_reserve;
  if (is_kept && !refill_memory_reserve()) throw std::bad_alloc();
  ::operator delete(::operator new(bytes));
  if (is_kept && reserve.load() == nullptr) throw std::bad_alloc();
}

bool refill_memory_reserve() {
  if (reserve.load() != nullptr) return true;
  void* const memory = std::malloc(reserve_size);
  void* none = nullptr;
  if (memory != nullptr && !reserve.compare_exchange_strong(none, memory)) std::free(memory);
  return reserve.load() != nullptr;
}

void return_freed_memory() {
#ifdef __GLIBC__
  malloc_trim(0);
#endif
}

}  // namespace platform
