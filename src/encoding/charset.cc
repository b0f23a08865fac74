#include "encoding/charset.h"

namespace encoding {

std::optional<charset_t> charset_for_key(std::string_view key) {
  for (std::size_t i = 0; i < charset_key.size(); ++i) {
    if (charset_key[i] && key == charset_key[i]) return static_cast<charset_t>(i);
  }
  return std::nullopt;
}

}  // namespace encoding
