#include "actions/movement.h"
#include "actions/word_units.h"

namespace actions {
namespace {

/// The visual column at which the word begins that the position is in or after.
size_t word_column(text::view_iterator const& it) {
  text::view_iterator end(it.view, it.base);
  if (!is_word_char(character_at(end))) end = search_backward(end, is_word_char);
  return column_before_wrap(search_backward(end, is_not_word_char));
}

/// Finds edges of blocks: of runs of lines in which a word begins at one visual column.
class block_walk {
 public:
  /// Goes no further than to `last_line`.
  block_walk(text::view const* view, size_t column, size_t last_line, bool downward)
      : view_(view), column_(column), last_(last_line), downward_(downward) {}

  /// The edge of the block of `line`; when that is `line` itself, the next line of any block.
  size_t edge_from(size_t line) const {
    size_t edge = line;
    while (edge != last_ && belongs(next(edge))) edge = next(edge);
    if (edge != line) return edge;
    while (edge != last_) {
      edge = next(edge);
      if (belongs(edge)) break;
    }
    return edge;
  }

 private:
  size_t next(size_t line) const { return downward_ ? line + 1 : line - 1; }
  bool belongs(size_t line) const {
    return is_word_at(line, column_) && (column_ == 0 || !is_word_at(line, column_ - 1));
  }
  bool is_word_at(size_t line, size_t column) const {
    return is_word_char(
        character_at(iter_from_hybrid_pos(view_, {line, column}, text::freehanded_t::on)));
  }

  text::view const* view_;
  size_t column_;
  size_t last_;
  bool downward_;
};

text::view_iterator to_edge_of_column(text::view_iterator const& it, size_t last, bool downward) {
  size_t const line = line_before_filters(it);
  if (line == last) return it;
  size_t const edge = block_walk(it.view, word_column(it), last, downward).edge_from(line);
  return iter_from_hybrid_pos(it.view, {edge, column_before_wrap(it)}, text::freehanded_t::on);
}

}  // namespace

text::view_iterator to_beginning_of_column(text::view_iterator const& it) {
  return to_edge_of_column(it, 0, false);
}

text::view_iterator to_end_of_column(text::view_iterator const& it) {
  return to_edge_of_column(it, it.base.storage->lines() - 1, true);
}

}  // namespace actions
