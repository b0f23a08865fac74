#include "encoding/line_ending.h"

namespace line_ending {

std::optional<type> type_for_key(std::string_view text) {
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (text == key[i]) return static_cast<type>(i);
  }
  return std::nullopt;
}

type counts::prevailing() const {
  if (lf >= cr) return lf < crlf ? CRLF : LF;
  return cr < crlf ? CRLF : CR;
}

}  // namespace line_ending
