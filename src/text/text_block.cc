#include "text/text_block.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>

#include "text/pages.h"

namespace text {

struct text_block::adopted_header : header {
  std::function<void()> release;

  static void destroy_adopted(header* dying) {
    auto* adopted = static_cast<adopted_header*>(dying);
    if (adopted->release) adopted->release();
    delete adopted;
  }
};

struct text_block::paged_header : header {
  void* memory;
  size_t bytes;

  static void destroy_paged(header* dying) {
    auto* paged = static_cast<paged_header*>(dying);
    free_pages(paged->memory, paged->bytes);
    delete paged;
  }
};

text_block& text_block::operator=(text_block other) noexcept {
  std::swap(header_, other.header_);
  return *this;
}

text_block text_block::copy(unit_view units) {
  if (units.empty()) return {};
  text_block_builder builder(units.size());
  std::copy(units.begin(), units.end(), builder.data());
  return builder.finish(units.size());
}

text_block text_block::fill(size_t count, char_t unit) {
  if (count == 0) return {};
  text_block_builder builder(count);
  std::fill_n(builder.data(), count, unit);
  return builder.finish(count);
}

text_block text_block::adopt(char_t const* units, size_t count, std::function<void()> release) {
  return text_block(
      new adopted_header{{1, count, units, &adopted_header::destroy_adopted}, std::move(release)});
}

bool text_block::is_sole_owner_of_pages() const {
  return use_count() == 1 && header_->destroy == &paged_header::destroy_paged;
}

text_block::pages text_block::release_pages() {
  auto* const paged = static_cast<paged_header*>(std::exchange(header_, nullptr));
  pages const released{paged->memory, paged->bytes};
  delete paged;
  return released;
}

text_block_builder::text_block_builder(size_t capacity) : capacity_(capacity) {
  using header = text_block::header;
  if (capacity > (std::numeric_limits<size_t>::max() - sizeof(header)) / sizeof(char_t))
    throw std::bad_alloc();
  size_t const bytes = capacity * sizeof(char_t);
  if (bytes < paged_allocation) {
    void* memory = allocate_from_heap(sizeof(header) + bytes);
    units_ = reinterpret_cast<char_t*>(static_cast<char*>(memory) + sizeof(header));
    block_.header_ = new (memory)
        header{1, capacity, units_, [](header* dying) { std::free(static_cast<void*>(dying)); }};
  } else {
    using paged = text_block::paged_header;
    auto made = new paged{{1, capacity, nullptr, &paged::destroy_paged}, nullptr, bytes};
    try {
      made->memory = allocate_pages(bytes);
    } catch (...) {
      delete made;
      throw;
    }
    made->units = units_ = static_cast<char_t*>(made->memory);
    block_.header_ = made;
  }
}

text_block text_block_builder::finish(size_t count) {
  auto* header = block_.header_;
  header->size = count;
  size_t const bytes = capacity_ * sizeof(char_t);
  size_t const used = count * sizeof(char_t);
  if (bytes >= paged_allocation) {
    discard_pages(units_, used, bytes);
  } else if (count < capacity_) {
    // A header is plain data, so it may move with its units; a failure leaves the old memory.
    if (void* memory = std::realloc(static_cast<void*>(header), sizeof(*header) + used)) {
      header = static_cast<decltype(header)>(memory);
      header->units = reinterpret_cast<char_t*>(static_cast<char*>(memory) + sizeof(*header));
      block_.header_ = header;
    }
  }
  units_ = nullptr;
  return std::move(block_);
}

}  // namespace text
