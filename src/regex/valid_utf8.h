#pragma once

#include <string>
#include <string_view>

namespace regex {

/// A UTF-8 text as Oniguruma may be given it: in a text that is not valid, a copy has U+FFFD in the
/// place of each surrogate and U+001A in that of any other wrong byte, so that all offsets stay.
/// Valid text is borrowed and must outlive this.
class valid_utf8 {
 public:
  explicit valid_utf8(std::string_view text);
  valid_utf8(valid_utf8 const&) = delete;
  valid_utf8& operator=(valid_utf8 const&) = delete;

  char const* data() const { return bytes_.data(); }
  std::size_t size() const { return bytes_.size(); }
  /// The text as it was given.
  std::string_view original() const { return original_; }
  /// The bytes of the character at `index` < size().
  std::size_t length_at(std::size_t index) const;

 private:
  std::string copy_;
  std::string_view bytes_, original_;
};

}  // namespace regex
