#include "typing/kept_indents.h"

#include <algorithm>

namespace typing {
namespace {

constexpr std::size_t furthest_line = 200;  // where walks end at the latest

bool has_bits(unsigned type, unsigned bits) {
  return (type & bits) != 0;
}

constexpr auto increase = styles::indent_patterns::increase;
constexpr auto decrease = styles::indent_patterns::decrease;
constexpr auto next_line = styles::indent_patterns::next_line;

}  // namespace

void kept_indents::line_was_moved(std::size_t number, std::ptrdiff_t by) {
  if (by != 0) moved_[number] = by;
}

std::size_t kept_indents::of_line(line_indent wanted) {
  std::size_t const number = wanted.number;
  std::size_t const own = lines_.width_of(number);
  auto const continued = lines_.line_continued_by(number);
  auto const above = lines_.counting_line_above(number);
  if (!above) return continued || number > furthest_line ? own : wanted.columns;
  learn_steps(number);
  above_ = *above;
  first_ = lines_.first_line_of(above_);
  auto const moved = moved_.find(continued.value_or(first_));
  std::ptrdiff_t const by = moved == moved_.end() ? 0 : moved->second;
  auto const with_those_above =
      static_cast<std::size_t>(std::max<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(own) + by, 0));
  if (continued) return with_those_above;
  if (wanted.columns == own) return own;
  for (std::size_t const width : {with_those_above, own})
    if (width != wanted.columns && allows({number, width})) return width;
  auto const back = lines_.type_of_line(number) == 0 ? after_single_line(above_) : std::nullopt;
  return back.value_or(wanted.columns);
}

bool kept_indents::allows(line_indent proposed) {
  unsigned const type = lines_.type_of_line(proposed.number);
  unsigned const above = lines_.type_of_statement(first_, above_);
  if (lines_.brackets_of(proposed.number).leading > 0) return allows_closing(proposed);
  if (styles::indent_patterns::is_label(type)) return allows_label(proposed);
  if (has_bits(type, decrease)) {
    auto const match = matching_line(proposed.number);
    return match && proposed.columns == width_of_first(*match);
  }
  if (opens_block(above_)) return allows_first_of_block(proposed);
  if (styles::indent_patterns::is_label(above)) return allows_after_label(proposed);
  std::size_t const outside = lines_.width_of(first_);
  if (has_bits(above, next_line)) return allows_inside(proposed.columns, outside);
  bool const unfinished = lines_.is_unfinished(above_);
  auto const lines = lines_.beginnings_of(above_);
  return std::any_of(lines.begin(), lines.end(), [&](std::size_t line) {
    if (unfinished && proposed.columns >= lines_.width_of(line)) return true;
    std::vector<std::size_t> const heads = heads_of(line);
    return heads.empty() ? proposed.columns == lines_.width_of(line)
                         : std::find(heads.begin(), heads.end(), proposed.columns) != heads.end();
  });
}

// As the line that opens the block, the first one of its statement, or one between them does.
bool kept_indents::allows_closing(line_indent proposed) {
  std::size_t const leading = lines_.brackets_of(proposed.number).leading;
  for (std::size_t const inner : {std::size_t(0), leading - 1}) {
    auto const open = lines_.open_bracket_above(proposed.number, inner);
    if (!open) return false;
    std::size_t const first = lines_.first_line_of(open->line);
    if (is_in_expression(proposed.number, inner) && proposed.columns >= lines_.width_of(first))
      return true;
    for (std::size_t line = first; line <= open->line; ++line)
      if (proposed.columns == lines_.width_of(line)) return true;
  }
  return false;
}

bool kept_indents::allows_label(line_indent proposed) {
  auto const match = matching_line(proposed.number);
  if (!match) return false;
  std::size_t const like = width_of_first(*match);
  bool const opens =
      opens_block(above_) || styles::indent_patterns::is_label(lines_.type_of_line(above_));
  if (!opens && *match != above_ && proposed.columns == lines_.width_of(above_)) return true;
  if (styles::indent_patterns::is_label(lines_.type_of_line(*match)))
    return proposed.columns == like;
  bool const in_brackets = lines_.ends_with_bracket(*match);
  return in_brackets ? like <= proposed.columns && proposed.columns <= like + lines_.tab_size()
                     : proposed.columns == like;
}

// Whether the block that a line is in begins inside of another bracket of the same statement.
bool kept_indents::is_in_expression(std::size_t number, std::size_t inner) {
  auto const open = lines_.open_bracket_above(number, inner);
  auto const around = lines_.open_bracket_above(number, inner + 1);
  return open && around && around->line >= lines_.first_line_of(open->line);
}

bool kept_indents::is_part_of_expression(std::size_t number) {
  return lines_.is_unfinished(number) || lines_.brackets_of(number).closed > 0 ||
         is_in_expression(number, 0);
}

bool kept_indents::allows_first_of_block(line_indent proposed) {
  std::size_t const outside = lines_.width_of(first_), nearest = lines_.width_of(above_);
  if (proposed.columns == outside)
    return !has_bits(lines_.type_of_statement(first_, above_), increase) ||
           lines_.patterns_of_line(above_)->matches(styles::indent_patterns::flat_block,
                                                    lines_.storage().line_units(above_));
  bool const in_expression = proposed.columns > outside && is_part_of_expression(proposed.number);
  return (in_expression || allows_inside(proposed.columns, outside) ||
          allows_inside(proposed.columns, nearest)) &&
         !is_shallower_below(proposed);
}

bool kept_indents::allows_after_label(line_indent proposed) {
  std::size_t const label = lines_.width_of(above_);
  auto const open = lines_.open_bracket_above(proposed.number);
  return allows_inside(proposed.columns, label) ||
         (open && proposed.columns > label &&
          allows_inside(proposed.columns, width_of_first(open->line)));
}

// By at most a level, or by as much as lines above are, if there are any.
bool kept_indents::allows_inside(std::size_t width, std::size_t outside) {
  if (width <= outside) return false;
  return steps_.empty() || steps_.count(width - outside) != 0 ||
         width - outside <= lines_.tab_size();
}

// The line that begins what a line ends: the one that opens its block or, for a label, the label
// before.
std::optional<std::size_t> kept_indents::matching_line(std::size_t number) {
  bool const label = styles::indent_patterns::is_label(lines_.type_of_line(number));
  std::size_t inner = 0;
  for (std::size_t line = number; line-- > number - std::min(number, furthest_line);) {
    unsigned const type = lines_.type_of_line(line);
    if (type == styles::indent_patterns::unindented) continue;
    if (styles::indent_patterns::is_label(type)) {
      if (inner == 0 && label) return line;
      auto const& here = lines_.brackets_of(line);
      if (here.open.size() > here.closed) --inner;
    } else if (has_bits(type, increase)) {
      if (inner-- == 0) return line;
    } else if (has_bits(type, decrease)) {
      ++inner;
    }
  }
  return std::nullopt;
}

bool kept_indents::opens_block(std::size_t number) {
  if (lines_.ends_with_bracket(number)) return true;
  unsigned const type = lines_.type_of_line(number);
  return has_bits(type, increase) && !styles::indent_patterns::is_label(type);
}

// Whether another line of the block that a line begins has less than its indentation.
bool kept_indents::is_shallower_below(line_indent proposed) {
  std::size_t const end = std::min(lines_.storage().lines(), proposed.number + furthest_line);
  bool const in_bracket = lines_.ends_with_bracket(above_);
  std::size_t inner = 0;
  for (std::size_t line = proposed.number; line < end; ++line) {
    lines_.wait_for_scopes(line);
    auto const& here = lines_.brackets_of(line);
    if (here.closed > inner) return false;
    bool const counts = line > proposed.number && inner == 0 &&
                        lines_.type_of_line(line) != styles::indent_patterns::unindented &&
                        !styles::indent_patterns::is_label(lines_.type_of_line(line)) &&
                        !lines_.line_continued_by(line);
    bool const closes = has_bits(lines_.type_of_line(line), decrease);
    std::size_t const outside = lines_.width_of(closes ? above_ : first_);
    if (counts && !in_bracket && lines_.width_of(line) <= outside) return false;
    if (counts && lines_.width_of(line) < proposed.columns) return true;
    inner += here.open.size() - here.closed;
  }
  return false;
}

// Of the statements without braces of which a line is the last one, from the inside out.
std::vector<std::size_t> kept_indents::heads_of(std::size_t number) {
  std::vector<std::size_t> heads;
  std::size_t width = lines_.width_of(number);
  for (std::size_t line = number; number - line < furthest_line;) {
    auto const last = lines_.counting_line_above(line);
    if (!last) break;
    line = lines_.first_line_of(*last);
    if (lines_.width_of(line) >= width) continue;
    if (!has_bits(lines_.type_of_statement(line, *last), next_line)) break;
    width = lines_.width_of(line);
    heads.push_back(width);
  }
  return heads;
}

std::optional<std::size_t> kept_indents::after_single_line(std::size_t number) {
  if (!lines_.patterns_of_line(number)->know(next_line)) return std::nullopt;
  if (has_bits(lines_.type_of_line(number), styles::indent_patterns::unindented | next_line) ||
      lines_.is_unfinished(number) || !lines_.brackets_of(number).open.empty())
    return std::nullopt;
  std::size_t const first = lines_.first_line_of(number);
  auto const above = lines_.counting_line_above(first);
  if (!above ||
      !has_bits(lines_.type_of_statement(lines_.first_line_of(*above), *above), next_line))
    return std::nullopt;
  std::vector<std::size_t> const heads = heads_of(first);
  return heads.empty() ? std::nullopt : std::optional(heads.back());
}

// From the pairs of lines of which the first one opens a block: those above and, without any, those
// below.
void kept_indents::learn_steps(std::size_t number) {
  if (!learned_) learn_steps(number - std::min(number, furthest_line), number);
  if (learned_) learn_steps(*learned_, number);
  learned_ = number;
  if (!steps_.empty() || looked_below_) return;
  looked_below_ = true;
  learn_steps(number + 1, std::min(number + furthest_line, lines_.storage().lines()));
}

void kept_indents::learn_steps(std::size_t first, std::size_t last) {
  std::optional<std::size_t> above;
  if (first > 0) above = lines_.counting_line_above(first);
  for (std::size_t line = first; line < last; ++line) {
    lines_.wait_for_scopes(line);
    unsigned const type = lines_.type_of_line(line);
    if (type == styles::indent_patterns::unindented) continue;
    if (above && !styles::indent_patterns::is_label(lines_.type_of_line(*above)) &&
        has_bits(lines_.type_of_line(*above), increase | next_line)) {
      std::size_t const outside = width_of_first(*above), width = lines_.width_of(line);
      if (width > outside && !is_part_of_expression(line)) steps_.insert(width - outside);
    }
    above = line;
  }
}

}  // namespace typing
