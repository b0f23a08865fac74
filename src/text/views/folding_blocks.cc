// What lines say about folding, and which of them pair.

#include <algorithm>

#include "text/tab_width.h"
#include "text/views/folding_filter.h"

namespace text {

namespace {

constexpr unsigned type_shift = 14;
constexpr size_t widest_indent = (1u << type_shift) - 2;
constexpr size_t farthest_stop = 10000;  // lines
// Of those that are inserted at once; with more the pairs are found again.
constexpr size_t most_lines_looked_at = 1000;

}  // namespace

view::folding_filter::line_type view::folding_filter::parse_line(size_t line) const {
  if (!has_patterns() || line >= view_.storage->lines()) return line_type::none;
  unit_view const units = units_of(line);
  auto const matches = [&](oniguruma::ptrn_t const& ptrn) {
    return static_cast<bool>(
        oniguruma::find(units.data(), 0, static_cast<std::ptrdiff_t>(units.size()), &ptrn));
  };
  bool const starts = matches(*begin_pattern), stops = matches(*end_pattern);
  if (starts == stops) return line_type::none;
  return starts ? line_type::start : line_type::stop;
}

/// What a line says, folded or not. Lines are asked when they are needed: those on screen, and
/// those up to where their partners are.
std::optional<view::folding_filter::marker_t> view::folding_filter::marker(size_t line) const {
  if (!has_patterns()) return std::nullopt;
  if (marks_.empty()) marks_.assign(view_.storage->lines(), unknown);
  mark& known = marks_[line];
  if (known == unknown) {
    line_type const type = parse_line(line);
    size_t const indent =
        type == line_type::none ? 0 : indent_width(units_of(line), tab_stops(view_.tab_size));
    known = static_cast<mark>(static_cast<unsigned>(type) << type_shift |
                              std::min(indent, widest_indent));
  }
  auto const type = static_cast<line_type>(known >> type_shift);
  if (type == line_type::none) return std::nullopt;
  return marker_t{static_cast<uint32_t>(line), type, known & ((1u << type_shift) - 1)};
}

/// After an edit: `line` has changed, the `lines_after` have gone, `added` ones are new.
void view::folding_filter::forget_marks(size_t line, size_t lines_after, size_t added) {
  if (marks_.empty()) return;
  auto const offset = [](size_t n) { return static_cast<std::ptrdiff_t>(n); };
  auto const at = marks_.begin() + offset(line);
  auto const is_marker = [](mark known) {
    return static_cast<line_type>(known >> type_shift) != line_type::none;
  };
  bool keeps_pairs = line + lines_after < paired_ && added <= most_lines_looked_at &&
                     std::none_of(at + 1, at + 1 + offset(lines_after), is_marker);
  bool const is_paired = line < paired_;
  mark const former = *at;
  *at = unknown;
  if (lines_after != 0) marks_.erase(at + 1, at + 1 + offset(lines_after));
  if (added != 0) marks_.insert(marks_.begin() + offset(line + 1), added, unknown);
  if (!is_paired) return;
  (void)marker(line);
  keeps_pairs = keeps_pairs && marks_[line] == former;
  for (size_t n = 1; keeps_pairs && n <= added; ++n) keeps_pairs = !marker(line + n);
  if (!keeps_pairs) return forget_pairs();
  auto const after = has_start_.begin() + offset(line + 1);
  if (lines_after != 0) has_start_.erase(after, after + offset(lines_after));
  if (added != 0) has_start_.insert(has_start_.begin() + offset(line + 1), added, false);
  paired_ += added - lines_after;
}

/// A stop has a start when more starts than stops of its indent stand before it, counted from any
/// line.
void view::folding_filter::pair_marks(size_t line) const {
  if (paired_ == 0) {
    has_start_.clear();
    open_starts_.clear();
  }
  for (; paired_ <= line; ++paired_) {
    auto const found = marker(paired_);
    bool const counts = found && !is_end_of_fold(paired_);
    bool is_started = false;
    if (counts) {
      size_t& open = open_starts_[found->indent];
      is_started = found->type == line_type::stop && open != 0;
      open = found->type == line_type::start ? open + 1 : open - is_started;
    }
    has_start_.push_back(is_started);
  }
}

view::folding_filter::line_type view::folding_filter::folding_type(size_t line) {
  if (is_folded(line)) return line_type::folded;
  auto const found = marker(line);
  if (!found || is_end_of_fold(line)) return line_type::none;
  if (found->type == line_type::start) return found->type;
  pair_marks(line);
  if (!has_start_[line]) return line_type::none;
  return found->type;
}

/// Not looked for farther than drawing has time for: there may be one further down.
bool view::folding_filter::may_have_stop(marker_t const& start) const {
  size_t open = 1;
  size_t const lines = view_.storage->lines();
  size_t const end = std::min<size_t>(lines, start.line + farthest_stop);
  for (size_t line = start.line + size_t{1}; line < end; ++line) {
    auto const below = marker(line);
    if (!below || below->indent != start.indent || is_end_of_fold(line)) continue;
    if (below->type == line_type::start)
      ++open;
    else if (--open == 0)
      return true;
  }
  return end < lines;
}

view::folding_filter::line_type view::folding_filter::mark_of(size_t line) {
  line_type const type = folding_type(line);
  return type != line_type::start || may_have_stop(*marker(line)) ? type : line_type::none;
}

std::optional<view::folding_filter::folding_t> view::folding_filter::block_around(
    size_t line) const {
  std::vector<marker_t> open;
  size_t deeper = 0;  // blocks after `line` with the indent of the innermost open one
  for (size_t at = 0; at < view_.storage->lines(); ++at) {
    if (at > line && open.empty()) break;
    auto const found = marker(at);
    if (!found || is_end_of_fold(at)) continue;
    bool const fits = !open.empty() && open.back().indent == found->indent;
    if (found->type == line_type::start) {
      if (at <= line)
        open.push_back(*found);
      else if (fits)
        ++deeper;
    } else if (fits) {
      if (deeper != 0)
        --deeper;
      else if (at < line)
        open.pop_back();
      else
        return folding_t{open.back().line, found->line};
    }
  }
  return std::nullopt;
}

/// The blocks between two lines, inner ones before those around them, folded or not.
std::vector<view::folding_filter::block> view::folding_filter::blocks(size_t first,
                                                                      size_t last) const {
  std::vector<block> result;
  std::vector<marker_t> open;
  for (size_t line = first; line < last; ++line) {
    auto const found = marker(line);
    if (!found) continue;
    if (found->type == line_type::start) {
      open.push_back(*found);
    } else if (!open.empty() && open.back().indent == found->indent) {
      result.push_back({{open.back().line, found->line}, 1});
      open.pop_back();
    }
  }
  // A start without a stop is no block, so that the levels after it don't depend on it.
  std::vector<uint32_t> around;  // the first lines of the blocks that `block` is in, or may be
  for (auto block = result.rbegin(); block != result.rend(); ++block) {
    while (!around.empty() && block->lines.last < around.back()) around.pop_back();
    around.push_back(block->lines.first);
    block->level = around.size();
  }
  return result;
}

size_t view::folding_filter::level_of(size_t line) const {
  for (block const& found : blocks(0, view_.storage->lines()))
    if (found.lines.first == line || found.lines.last == line) return found.level;
  return 0;
}

}  // namespace text
