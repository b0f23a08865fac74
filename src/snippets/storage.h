#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace snippet {

/// The text that a snippet stands in: a string while it is parsed, the document afterwards. Offsets
/// are in units from the snippet's start.
class storage_t {
 public:
  virtual ~storage_t() = default;
  virtual std::u16string data(std::size_t from, std::size_t to) const = 0;
  /// Gives the units that now stand in place of the range: the document may take blanks for tabs.
  virtual std::size_t replace(std::size_t from, std::size_t to, std::u16string_view text) = 0;
};

/// A text in memory.
class buffer_storage_t : public storage_t {
 public:
  explicit buffer_storage_t(std::u16string& text) : text_(text) {}
  std::u16string data(std::size_t from, std::size_t to) const override {
    return text_.substr(from, to - from);
  }
  std::size_t replace(std::size_t from, std::size_t to, std::u16string_view text) override {
    text_.replace(from, to - from, text);
    return text.size();
  }

 private:
  std::u16string& text_;
};

}  // namespace snippet
