#pragma once

#include <cstddef>
#include <string_view>

namespace diacritics {

/// Goes over UTF-8 text by base characters with the marks after them. Code points below 256 always
/// begin a unit, wrong bytes are units of their own. The text is borrowed.
class iterator_t {
 public:
  iterator_t(char const* first, char const* last, char const* at);

  std::string_view operator*() const { return {at_, length_}; }
  /// The bytes of the unit, 0 at the end.
  std::size_t length() const { return length_; }
  iterator_t& operator++();
  iterator_t& operator--();
  iterator_t operator+(std::size_t n) const;
  bool operator==(iterator_t const& other) const { return at_ == other.at_; }
  char const* base() const { return at_; }

 private:
  void fetch();

  char const* first_;
  char const* last_;
  char const* at_;
  std::size_t length_ = 0;
};

iterator_t begin_of(char const* first, char const* last);

struct range_t {
  iterator_t first, last;
  iterator_t begin() const { return first; }
  iterator_t end() const { return last; }
};
range_t make_range(char const* first, char const* last);

}  // namespace diacritics
