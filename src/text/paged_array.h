#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "text/pages.h"

namespace text {

/// A growable array of plain elements, changed in place. Large ones stand in pages (see pages.h),
/// so that growing moves page tables and not the content, and so that pages filled by another
/// component can be taken over. Functions that need memory throw std::bad_alloc and leave the array
/// as it was.
template <typename T>
class paged_array {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  paged_array() = default;
  paged_array(paged_array&& other) noexcept { swap(other); }
  paged_array& operator=(paged_array&& other) noexcept {
    swap(other);
    return *this;
  }
  ~paged_array() { free_memory(elements_, bytes()); }

  /// Makes the array the owner of `bytes` of pages that begin with `size` elements.
  static paged_array adopt(void* pages, size_t bytes, size_t size) {
    paged_array made;
    made.elements_ = static_cast<T*>(pages);
    made.size_ = size;
    made.capacity_ = bytes / sizeof(T);
    return made;
  }

  T const* data() const { return elements_; }
  size_t size() const { return size_; }

  void reserve(size_t count) {
    if (count <= capacity_) return;
    elements_ = static_cast<T*>(reallocate_memory(elements_, bytes(), count * sizeof(T)));
    capacity_ = count;
  }
  /// `added`, here and below, must not be part of this array.
  void append(T const* added, size_t count) { replace(size_, 0, added, count); }
  /// Replaces `erased` elements at `index`. Whole pages that are no longer needed are given back.
  void replace(size_t index, size_t erased, T const* added, size_t count);

 private:
  void swap(paged_array& other) noexcept {
    std::swap(elements_, other.elements_);
    std::swap(size_, other.size_);
    std::swap(capacity_, other.capacity_);
  }
  size_t bytes() const { return capacity_ * sizeof(T); }
  void make_room(size_t size);

  T* elements_ = nullptr;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

template <typename T>
void paged_array<T>::make_room(size_t size) {
  if (size <= capacity_) return;
  // Pages grow cheaply, so little is set aside. What is never changed gets no room to grow at all.
  size_t const spare = size * sizeof(T) < paged_allocation ? size / 2 : size / 8;
  reserve(capacity_ == 0 ? size : size + spare);
}

template <typename T>
void paged_array<T>::replace(size_t index, size_t erased, T const* added, size_t count) {
  size_t const after = size_ - index - erased;
  size_t const size = index + count + after;
  make_room(size);
  T* const at = elements_ + index;
  if (after != 0 && erased != count) std::memmove(at + count, at + erased, after * sizeof(T));
  if (count != 0) std::memcpy(at, added, count * sizeof(T));
  bool const shrinks_by_pages = size < size_ && (size_ - size) * sizeof(T) >= paged_allocation;
  size_ = size;
  if (shrinks_by_pages) discard_pages(elements_, size * sizeof(T), bytes());
}

}  // namespace text
