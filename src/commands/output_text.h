#pragma once

#include "text/storage.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace commands {

/// Output as text, decoded while it comes: bytes of UTF-8, cut anywhere. As in unicode::to_utf16(),
/// three-byte surrogates count as text, so that what a document holds comes back through `cat`.
///
/// A filter often leaves much of a text as it is: what the output begins with as the text does is
/// only counted.
class output_text {
 public:
  /// `expected` bytes are made room for at once, when they turn out to be many. The text of
  /// `like`, which may be null, must stay as it is until the output is there.
  explicit output_text(std::size_t expected = 0, text::storage const* like = nullptr)
      : expected_(expected), like_(like) {}

  /// Throws std::bad_alloc.
  void append(std::string_view bytes);
  /// What comes after the common beginning; nothing if the output isn't UTF-8. To be called once.
  std::optional<text::text_block> take();
  /// Where the text that is `like` ceases to be the same.
  text::pos same() const { return same_; }

 private:
  void make_room(std::size_t units);
  void put(char32_t character);
  void pass_same();
  unsigned char const* decode(unsigned char const* at, unsigned char const* end);

  std::size_t const expected_;
  text::storage const* like_;
  text::pos same_;
  std::unique_ptr<text::text_block_builder> units_;
  std::size_t used_ = 0;
  std::string cut_;  ///< the beginning of a sequence whose rest has yet to come
  bool is_valid_ = true;
};

}  // namespace commands
