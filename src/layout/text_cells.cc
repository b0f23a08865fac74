#include "layout/text_cells.h"

#include "platform/unicode.h"
#include "text/cell_width.h"
#include "text/tab_width.h"

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

kind kind_of(std::u16string_view cluster, std::size_t cells) {
  char16_t const u = cluster.front();
  if (u == u'\t') return kind::tab;
  if (is_control(u)) return kind::control;
  if (cluster.size() == 1 && is_plain(u)) return kind::run;
  if (is_surrogate(u) && (cluster.size() == 1 || !is_surrogate(cluster[1]))) return kind::surrogate;
  char32_t const c = unicode::code_point_at(cluster, 0);
  if (unicode::runs_right_to_left(c)) return kind::script;
  return cells == 0 && !unicode::is_combining(c) ? kind::unprinted : kind::cluster;
}

bool goes_on(piece const& before, kind k, std::size_t cells) {
  return before.kind == k && ((k == kind::run && cells == 1) || k == kind::script);
}

}  // namespace

std::vector<piece> pieces_of(std::u16string_view text, std::size_t column, text::tab_stops tabs) {
  std::vector<piece> pieces;
  for (std::size_t at = 0; at < text.size();) {
    text::measured_cluster const measured = text::measure_cluster(text, at);
    std::size_t const end = measured.end;
    kind const k = kind_of(text.substr(at, end - at), measured.cells);
    std::size_t const width = k == kind::tab ? text::tab_width(column, tabs) : measured.cells;
    if (!pieces.empty() && goes_on(pieces.back(), k, width)) {
      pieces.back().last = end;
      pieces.back().width += width;
    } else {
      pieces.push_back({k, at, end, column, width});
    }
    column += width;
    at = end;
  }
  return pieces;
}

}  // namespace text_cells
