#pragma once

#include <cstddef>
#include <utility>

#include "text/paged_array.h"

namespace text {

/// A handle to a growable array that moves by its handle alone: two words, so that a vector of
/// lines grows, shifts and splices without touching line text.
///
/// The handle is in one of three states.
/// - null: an array that was never touched; reads as empty.
/// - owned: a counted array. There is no copy-on-write; all handles to one array alias its content.
/// - borrowed: a slice of memory that its owner keeps alive and unchanged. It becomes owned,
///   by a copy, as soon as the array itself is asked for, to change it or to alias it.
///
/// The count is plain: handles are copied only by the thread that owns them or under its lock.
template <typename T>
class shared_buffer {
 public:
  using array = paged_array<T>;

  struct impl {
    array data;
    size_t count = 1;
  };

  shared_buffer() = default;
  shared_buffer(shared_buffer const& other) { share(other); }
  shared_buffer(shared_buffer&& other) noexcept
      : word_(std::exchange(other.word_, nullptr)), length_(std::exchange(other.length_, 0)) {}
  ~shared_buffer() { release(); }

  shared_buffer& operator=(shared_buffer const& other) {
    if (this != &other) {
      release();
      share(other);
    }
    return *this;
  }
  shared_buffer& operator=(shared_buffer&& other) noexcept {
    swap(other);
    return *this;
  }
  void swap(shared_buffer& other) noexcept {
    std::swap(word_, other.word_);
    std::swap(length_, other.length_);
  }

  /// A handle to `length` elements at `first`, which must outlive it. An empty slice is a null
  /// handle.
  static shared_buffer borrow(T const* first, size_t length) {
    shared_buffer result;
    if (length != 0) {
      result.word_ = const_cast<T*>(first);
      result.length_ = length;
    }
    return result;
  }

  /// Makes this the one owner of `data`.
  static shared_buffer own(array data) {
    shared_buffer result;
    result.word_ = new impl{std::move(data)};
    return result;
  }

  bool is_null() const { return word_ == nullptr; }
  bool is_borrowed() const { return length_ != 0; }

  /// Reads never allocate, whatever the state. The pointer is good until the next change.
  T const* data() const {
    if (is_borrowed()) return static_cast<T const*>(word_);
    return is_null() ? nullptr : owner()->data.data();
  }
  size_t size() const {
    if (is_borrowed()) return length_;
    return is_null() ? 0 : owner()->data.size();
  }

  /// The shared array, to change it: a borrowed slice is copied first. A null handle gets an empty
  /// one if `create`, and gives null otherwise.
  impl* get_pimpl(bool create) const {
    if (is_borrowed()) {
      array copy;
      copy.append(data(), length_);
      word_ = new impl{std::move(copy)};
      length_ = 0;
    } else if (is_null() && create) {
      word_ = new impl;
    }
    return owner();
  }

  void release() {
    if (!is_borrowed() && !is_null() && --owner()->count == 0) delete owner();
    word_ = nullptr;
    length_ = 0;
  }

  /// Replaces `erased` elements at `column` by `count` others, which must not be part of this
  /// array.
  void replace(size_t column, size_t erased, T const* inserted, size_t count);

 private:
  impl* owner() const { return static_cast<impl*>(word_); }
  void share(shared_buffer const& other) {
    if (impl* shared = other.get_pimpl(false)) {
      ++shared->count;
      word_ = shared;
    }
  }

  // Mutable, as a look at a const handle may turn a borrowed slice into an array.
  mutable void* word_ = nullptr;
  mutable size_t length_ = 0;  ///< of a borrowed slice; 0 for the other two states
};

template <typename T>
void shared_buffer<T>::replace(size_t column, size_t erased, T const* inserted, size_t count) {
  if (erased == 0 && count == 0) return;
  if (!is_borrowed()) {
    get_pimpl(true)->data.replace(column, erased, inserted, count);
    return;
  }
  T const* const first = data();
  size_t const after = column + erased;
  size_t const length = size() - erased + count;
  if (count == 0 && (column == 0 || after == size())) {
    *this = borrow(column == 0 ? first + erased : first, length);
    return;
  }
  // One pass into memory with room to grow: a huge line is copied once, at its first change.
  array made;
  made.reserve(length + length / 8 + 16);
  made.append(first, column);
  made.append(inserted, count);
  made.append(first + after, size() - after);
  *this = own(std::move(made));
}

}  // namespace text
