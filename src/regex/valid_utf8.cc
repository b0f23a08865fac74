#include "regex/valid_utf8.h"

#include "plist/utf8.h"

namespace regex {

valid_utf8::valid_utf8(std::string_view text) : bytes_(text), original_(text) {
  if (plist::is_utf8(text)) return;
  copy_ = text;
  for (std::size_t at = 0; at < copy_.size();) {
    std::string_view const rest = std::string_view(copy_).substr(at);
    bool const surrogate = rest.size() >= 3 && rest[0] == '\xed' && (rest[1] & 0xe0) == 0xa0 &&
                           (rest[2] & 0xc0) == 0x80;
    if (std::size_t const length = plist::utf8_length(rest)) {
      at += length;
    } else if (surrogate) {
      copy_.replace(at, 3, "\xef\xbf\xbd");
      at += 3;
    } else {
      copy_[at++] = '\x1a';
    }
  }
  bytes_ = copy_;
}

std::size_t valid_utf8::length_at(std::size_t index) const {
  return plist::utf8_length(bytes_.substr(index));
}

}  // namespace regex
