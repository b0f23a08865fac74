#include "layout/bracket_search.h"

#include <algorithm>
#include <utility>

namespace layout {
namespace {

constexpr std::size_t bracket_cost = 50;  // units that are passed while a scope is looked up

}  // namespace

bracket_search::bracket_search(text::storage const& storage, text::pos const& at,
                               styles::unit_pair pair, belongs_function belongs)
    : storage_(storage),
      at_(at),
      own_(pair.open),
      partner_(pair.close),
      forward_(storage.line_units(at.line)[at.column] == pair.open),
      belongs_(std::move(belongs)) {
  if (forward_)
    ++at_.column;
  else
    std::swap(own_, partner_);
}

bracket_search::state bracket_search::go_on(std::size_t units) {
  std::size_t left = units;
  while (left > 0) {
    std::size_t const before = left;
    bool const found = search_line(left);
    passed_ += before - left;
    if (found) return state::found;
    if (left == 0) break;
    if (!to_next_line()) return state::none;
    --left;
    ++passed_;
  }
  return state::searching;
}

// Whether the unit, which is at the present place, is the partner sought.
bool bracket_search::pass(text::char_t unit, std::size_t& units) {
  --units;
  if (unit != own_ && unit != partner_) return false;
  units -= std::min(units, bracket_cost);
  if (!belongs_(at_)) return false;
  depth_ += unit == own_ ? 1 : std::size_t(-1);
  return depth_ == 0;
}

// To the line's end, or as far as the units allow, which are taken off. A line that ends just where
// they do is left for the next call.
bool bracket_search::search_line(std::size_t& units) {
  text::unit_view const line = storage_.line_units(at_.line);
  if (forward_) {
    for (; at_.column < line.size() && units > 0; ++at_.column)
      if (pass(line[at_.column], units)) return true;
    return false;
  }
  while (at_.column > 0 && units > 0) {
    --at_.column;
    if (pass(line[at_.column], units)) return true;
  }
  return false;
}

bool bracket_search::to_next_line() {
  if (forward_) {
    if (at_.line + std::size_t{1} == storage_.lines()) return false;
    at_ = {at_.line + std::size_t{1}, 0};
  } else {
    if (at_.line == 0) return false;
    at_ = {at_.line - std::size_t{1}, storage_.line_units(at_.line - std::size_t{1}).size()};
  }
  return true;
}

}  // namespace layout
