#pragma once

#include <string>
#include <string_view>

namespace regex {

/// A UTF-16 text as Oniguruma may be given it: text that holds lone surrogates, which buffers may,
/// is replaced by a copy with U+FFFD in the place of each, so that all offsets stay. Other text is
/// borrowed and must outlive this. One scan at construction; after that any thread may read.
class valid_text {
 public:
  explicit valid_text(std::u16string_view text);
  valid_text(valid_text const&) = delete;
  valid_text& operator=(valid_text const&) = delete;

  char16_t const* data() const { return units_.data(); }
  std::size_t size() const { return units_.size(); }
  std::u16string_view units() const { return units_; }
  /// Whether `index` lies between the two units of a pair, where no match can begin or end.
  bool splits_pair(std::size_t index) const;

 private:
  std::u16string copy_;
  std::u16string_view units_;
};

}  // namespace regex
