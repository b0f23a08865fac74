#include "layout/word_marks.h"

#include "actions/word_units.h"
#include "layout/geometry.h"
#include "layout/laid_out_view.h"
#include "text/views/view.h"

#include <algorithm>

namespace layout {
namespace {

constexpr std::size_t longest_word = 200;  // units
constexpr std::size_t margin = 50;         // columns beside what is seen

bool is_word_before(text::unit_view line, std::size_t at) {
  return at > 0 &&
         actions::is_word_char(unicode::code_point_at(line, text::previous_cluster(line, at)));
}

bool is_word_at(text::unit_view line, std::size_t at) {
  return at < line.size() && actions::is_word_char(unicode::code_point_at(line, at));
}

bool is_whole_word(text::unit_view line, std::size_t first, std::size_t last) {
  return text::is_cluster_start(line, first) && text::is_cluster_start(line, last) &&
         !is_word_before(line, first) && !is_word_at(line, last);
}

}  // namespace

std::u16string selected_word(text::view const& view) {
  text::selection const& selection = view.selection;
  text::iterator const first = selection.first().base, last = selection.last().base;
  if (selection.empty() || selection.column_mode || first.line != last.line ||
      last.column - first.column > longest_word)
    return {};
  text::unit_view const line = view.storage->line_units(first.line);
  for (std::size_t at = first.column; at < last.column; at = text::next_cluster(line, at))
    if (!is_word_at(line, at)) return {};
  if (first == last || !is_whole_word(line, first.column, last.column)) return {};
  return std::u16string(line.substr(first.column, last.column - first.column));
}

void word_marks::follow(bool wanted) {
  std::u16string word = wanted ? selected_word(*view_.view()) : std::u16string();
  if (word == word_) return;
  mark_for_display();
  word_ = std::move(word);
  mark_for_display();
}

void word_marks::mark_for_display() const {
  if (view_.host() == nullptr) return;
  text::view const& view = *view_.view();
  platform::rect const visible = visible_rect_of(view_);
  for (place const& marked : places()) {
    platform::point const at = position_of(view_, {&view, marked.first});
    view_.host()->set_needs_display(
        platform::rect{visible.x, at.y, visible.width, view_.layout().lineHeight()}.intersection(
            visible));
  }
}

word_marks::window word_marks::seen() const {
  TextLayout const& layout = view_.layout();
  text::view const& view = *view_.view();
  platform::rect const visible = view_.visibleTextRect();
  std::size_t const rows = view.lines();
  return {std::min(layout.row_at(visible.y), rows - 1),
          std::min(layout.row_at(visible.bottom()), rows - 1),
          layout.column_at(visible.x),
          layout.column_at(visible.right()),
          view.storage->current_memento,
          rows,
          view.selection.first().base.pos()};
}

std::vector<word_marks::place> const& word_marks::places() const {
  if (word_.empty()) {
    places_.clear();
    searched_word_.clear();
    return places_;
  }
  window const now = seen();
  if (now != searched_ || word_ != searched_word_) search(now);
  return places_;
}

void word_marks::search(window const& seen) const {
  searched_ = seen;
  searched_word_ = word_;
  places_.clear();
  text::view const& view = *view_.view();
  text::iterator passed(0, 0, view.storage);
  for (std::size_t row = seen.first_row; row <= seen.last_row; ++row) {
    text::iterator const begin = view.begin(row).base, end = view.end(row).base;
    auto const unit_at = [&](std::size_t column) {
      return begin.column + view.unit_at_row_column({row, column}).unit;
    };
    std::size_t const left = seen.first_column - std::min(seen.first_column, margin);
    std::size_t from = left == 0 ? begin.column : unit_at(left);
    std::size_t const to = std::min<std::size_t>(end.column, unit_at(seen.last_column + margin));
    // A word may stand in two rows.
    from -= std::min(from, word_.size());
    if (passed.line == begin.line) from = std::max<std::size_t>(from, passed.column);
    text::unit_view const line = view.storage->line_units(begin.line);
    text::unit_view const part = line.substr(0, std::min(line.size(), to + word_.size()));
    for (std::size_t at; (at = part.find(word_, from)) != part.npos; from = at + 1) {
      std::size_t const last = at + word_.size();
      if (!is_whole_word(line, at, last)) continue;
      text::iterator const first(begin.line, at, view.storage);
      passed = text::iterator(begin.line, last, view.storage);
      if (first.pos() != seen.selected) places_.emplace_back(first, passed);
    }
  }
}

}  // namespace layout
