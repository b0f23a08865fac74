#pragma once

#include <functional>
#include <utility>

#include "text/char_types.h"

namespace text {

/// A counted handle to an immutable block of units. Undo records hold their text in one, and the
/// lines of a storage may be slices of one, so that loaded text exists once.
///
/// The count is plain (not atomic): a block is shared within one thread, or under the lock of the
/// storage that borrows from it. A default block is empty and costs nothing.
class text_block {
 public:
  text_block() = default;
  text_block(text_block const& other) : header_(other.header_) { retain(); }
  text_block(text_block&& other) noexcept : header_(other.header_) { other.header_ = nullptr; }
  text_block& operator=(text_block other) noexcept;
  ~text_block() { release(); }

  /// A block of its own holding a copy of `units`.
  static text_block copy(unit_view units);
  /// A block of `count` times `unit`.
  static text_block fill(size_t count, char_t unit);
  /// Takes over foreign memory (mapped, allocated) without copying. `units` must stay readable and
  /// unchanged until `release` is called, which happens once, when the last handle goes. When
  /// `adopt` itself throws, the memory still belongs to the caller and `release` isn't called.
  static text_block adopt(char_t const* units, size_t count, std::function<void()> release);

  char_t const* begin() const { return header_ ? header_->units : nullptr; }
  char_t const* end() const { return begin() + size(); }
  char_t const* get() const { return begin(); }
  size_t size() const { return header_ ? header_->size : 0; }
  bool empty() const { return size() == 0; }
  unit_view view() const { return {begin(), size()}; }
  size_t use_count() const { return header_ ? header_->count : 0; }
  char_t operator[](size_t index) const { return header_->units[index]; }

  /// Whether this is the only handle to a block that stands in pages of its own (see pages.h).
  bool is_sole_owner_of_pages() const;
  struct pages {
    void* memory;
    size_t bytes;
  };
  /// Hands over those pages, which begin with the units. Leaves this handle empty.
  pages release_pages();

 private:
  friend class text_block_builder;

  struct header {
    size_t count;
    size_t size;
    char_t const* units;
    void (*destroy)(header*);
  };
  struct adopted_header;
  struct paged_header;

  explicit text_block(header* taken) : header_(taken) {}
  void retain() const {
    if (header_) ++header_->count;
  }
  void release() {
    if (header_ && --header_->count == 0) header_->destroy(header_);
  }

  header* header_ = nullptr;
};

/// A part of a block, which it keeps alive.
struct text_slice {
  text_slice() = default;
  text_slice(text_block whole) : block(std::move(whole)), units(block.view()) {}
  text_slice(text_block from, unit_view part) : block(std::move(from)), units(part) {}

  text_block block;
  unit_view units;
};

/// Memory for units that becomes a block without a copy: for decoders, which know only an upper
/// bound of the length. Large capacities are mapped, so pages that are never written cost nothing.
class text_block_builder {
 public:
  /// Throws std::bad_alloc.
  explicit text_block_builder(size_t capacity);
  text_block_builder(text_block_builder const&) = delete;
  text_block_builder& operator=(text_block_builder const&) = delete;

  char_t* data() { return units_; }
  size_t capacity() const { return capacity_; }

  /// The block of the first `count` units (at most the capacity). Gives unused pages back. The
  /// builder can't be used again.
  text_block finish(size_t count);

 private:
  size_t capacity_;
  text_block block_;
  char_t* units_;
};

}  // namespace text
