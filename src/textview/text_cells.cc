#include "textview/text_cells.h"

#include "platform/unicode.h"

namespace text_cells {
namespace {

bool is_control(char16_t u) {
  return u < 0x20 || (0x7F <= u && u <= 0x9F);
}
bool is_surrogate(char16_t u) {
  return 0xD800 <= u && u <= 0xDFFF;
}

// Letters, digits and signs for which fixed-pitch fonts have a glyph as wide as a cell. Anything
// else goes the careful way.
bool is_plain(char16_t u) {
  return (0x20 <= u && u <= 0x7E) || (0xA0 <= u && u <= 0x2AF && u != 0xAD) ||
         (0x370 <= u && u <= 0x52F && !(0x483 <= u && u <= 0x489)) ||
         (0x2010 <= u && u <= 0x2027) || (0x2500 <= u && u <= 0x257F);
}

bool may_join(char16_t u) {
  return u >= 0x300 && !is_plain(u);
}

kind kind_of(std::u16string_view text, std::size_t at) {
  char16_t const u = text[at];
  if (u == u'\t') return kind::tab;
  if (is_control(u)) return kind::control;
  bool const joined = at + 1 < text.size() && may_join(text[at + 1]);
  return is_plain(u) && !joined ? kind::run : kind::cluster;
}

}  // namespace

std::vector<piece> pieces_of(std::u16string_view text, std::size_t column, std::size_t tab_size) {
  std::vector<piece> pieces;
  for (std::size_t at = 0; at < text.size();) {
    kind k = kind_of(text, at);
    std::size_t end = at + 1;
    std::size_t width = 1;
    if (k == kind::tab) {
      width = tab_size - column % tab_size;
    } else if (k == kind::cluster) {
      end = unicode::next_grapheme_break(text, at);
      width = end - at;
      if (width == 1 && is_surrogate(text[at])) k = kind::surrogate;
    }
    if (k == kind::run && !pieces.empty() && pieces.back().kind == kind::run) {
      pieces.back().last = end;
      ++pieces.back().width;
    } else {
      pieces.push_back({k, at, end, column, width});
    }
    column += width;
    at = end;
  }
  return pieces;
}

}  // namespace text_cells
