#include "snippets/diacritics.h"

#include <unicode/utf8.h>

#include "platform/unicode.h"

namespace diacritics {
namespace {

/// The code point at the start, and its bytes; a wrong byte is one by itself.
char32_t code_point(std::string_view text, std::size_t& length) {
  std::int32_t i = 0, c = 0;
  auto const size = static_cast<std::int32_t>(text.size() < 4 ? text.size() : 4);
  U8_NEXT(text.data(), i, size, c);
  length = c < 0 ? 1 : static_cast<std::size_t>(i);
  return c < 0 ? U'\xfffd' : static_cast<char32_t>(c);
}

bool is_non_base(char const* at, char const* last, std::size_t& length) {
  char32_t const c = code_point({at, static_cast<std::size_t>(last - at)}, length);
  return c >= 256 && unicode::is_combining(c);
}

}  // namespace

iterator_t::iterator_t(char const* first, char const* last, char const* at)
    : first_(first), last_(last), at_(at) {
  fetch();
}

void iterator_t::fetch() {
  length_ = 0;
  if (at_ == last_) return;
  std::size_t next = 0;
  code_point({at_, static_cast<std::size_t>(last_ - at_)}, next);
  do length_ += next;
  while (at_ + length_ != last_ && is_non_base(at_ + length_, last_, next));
}

iterator_t& iterator_t::operator++() {
  at_ += length_;
  fetch();
  return *this;
}

iterator_t& iterator_t::operator--() {
  std::size_t length = 0;
  do {
    --at_;
    for (int n = 0; n < 3 && at_ != first_ && (*at_ & 0xc0) == 0x80; ++n) --at_;
  } while (at_ != first_ && is_non_base(at_, last_, length));
  fetch();
  return *this;
}

iterator_t iterator_t::operator+(std::size_t n) const {
  iterator_t result = *this;
  for (; n > 0 && result.length_ > 0; --n) ++result;
  return result;
}

iterator_t begin_of(char const* first, char const* last) {
  return {first, last, first};
}

range_t make_range(char const* first, char const* last) {
  return {{first, last, first}, {first, last, last}};
}

}  // namespace diacritics
