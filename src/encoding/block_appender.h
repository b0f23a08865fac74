#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <memory>

namespace encoding {

/// An output iterator that appends bytes to a block (a vector of bytes, a string) in pieces of
/// 256. Copies share the buffer; the last one to go appends the rest, so the block is complete
/// when all of them are gone, and must live until then. One thread only.
template <typename Block>
class block_appender {
 public:
  using iterator_category = std::output_iterator_tag;
  using value_type = void;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = void;

  explicit block_appender(Block& block) : state_(std::make_shared<state>(block)) {}
  block_appender& operator=(unsigned char byte) {
    state_->put(byte);
    return *this;
  }
  block_appender& operator*() { return *this; }
  block_appender& operator++() { return *this; }
  block_appender& operator++(int) { return *this; }

 private:
  class state {
   public:
    explicit state(Block& block) : block_(block) { make_room(); }
    state(state const&) = delete;
    state& operator=(state const&) = delete;
    ~state() { append(); }

    void put(unsigned char byte) {
      buffer_[used_++] = byte;
      if (used_ < buffer_.size()) return;
      append();
      make_room();
    }

   private:
    // Room for the next piece is made early, where running out of memory may still throw; the
    // destructor then finds it ready.
    void make_room() {
      std::size_t const needed = block_.size() + buffer_.size();
      if (block_.capacity() < needed) block_.reserve(std::max(needed, 2 * block_.capacity()));
    }
    void append() {
      block_.insert(block_.end(), buffer_.begin(), buffer_.begin() + used_);
      used_ = 0;
    }

    Block& block_;
    std::array<typename Block::value_type, 256> buffer_;
    std::size_t used_ = 0;
  };

  std::shared_ptr<state> state_;
};

}  // namespace encoding
