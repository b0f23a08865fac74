#pragma once

#include "text/text_block.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace commands {

/// Output as text, decoded while it comes: bytes of UTF-8, cut anywhere. As in unicode::to_utf16(),
/// three-byte surrogates count as text, so that what a document holds comes back through `cat`.
class output_text {
 public:
  /// `expected` bytes are made room for at once, when they turn out to be many.
  explicit output_text(std::size_t expected = 0) : expected_(expected) {}

  /// Throws std::bad_alloc.
  void append(std::string_view bytes);
  /// All of it; nothing if it isn't UTF-8. To be called once.
  std::optional<text::text_block> take();

 private:
  void make_room(std::size_t units);
  void put(char32_t character);
  unsigned char const* decode(unsigned char const* at, unsigned char const* end);

  std::size_t const expected_;
  std::unique_ptr<text::text_block_builder> units_;
  std::size_t used_ = 0;
  std::string cut_;  ///< the beginning of a sequence whose rest has yet to come
  bool is_valid_ = true;
};

}  // namespace commands
