// What lines say about folding, and which of them pair.

#include <algorithm>

#include "text/tab_width.h"
#include "text/views/folding_filter.h"

namespace text {

namespace {

constexpr size_t farthest_stop = 10000;  // lines
// Of those that are inserted at once; with more the pairs are found again.
constexpr size_t most_lines_looked_at = 1000;
constexpr size_t farthest_next = 1000;  // blank and ignored lines
constexpr size_t most_open_looked_at = 1000;
constexpr size_t longest_line = 4096;  // units; brackets after these don't count

// What a mark has room for.
constexpr int most_braces = 15;
constexpr size_t widest_indent = (1u << 20) - 1;

constexpr uint32_t unknown_depth = 0xFFFFFFFF;

// Kinds of brackets; 0 is none.
constexpr uint32_t brace = 1, square_bracket = 2, parenthesis = 3;

uint32_t kind_of_closing(char_t unit) {
  return unit == u'}' ? brace : unit == u']' ? square_bracket : unit == u')' ? parenthesis : 0;
}

uint32_t kind_of_opening(char_t unit) {
  return unit == u'{' ? brace : unit == u'[' ? square_bracket : unit == u'(' ? parenthesis : 0;
}

unit_view without_blanks(unit_view line) {
  size_t const first = line.find_first_not_of(u" \t");
  if (first == line.npos) return {};
  return line.substr(first, line.find_last_not_of(u" \t\r") + 1 - first);
}

bool begins_comment(unit_view text) {
  return text.starts_with(u"//") || text.starts_with(u"/*") || text.starts_with(u"#") ||
         text.starts_with(u"--");
}

/// Calls visit(place, unit) for the units that are in no string and no comment of the line, as far
/// as that can be seen without knowing its language.
template <typename Visit>
void visit_code(unit_view line, Visit visit) {
  line = line.substr(0, longest_line);
  for (size_t at = 0; at < line.size(); ++at) {
    char_t const unit = line[at];
    if (unit == u'\\') {
      ++at;
    } else if (unit == u'"' || unit == u'\'') {
      size_t end = at + 1;
      while (end < line.size() && line[end] != unit) end += line[end] == u'\\' ? 2 : 1;
      if (end < line.size()) at = end;  // else an apostrophe, or a string of several lines
    } else if (line.substr(at, 2) == u"//" && (at == 0 || line[at - 1] != u':')) {
      return;
    } else if (line.substr(at, 2) == u"/*") {
      at = std::min(line.find(u"*/", at + 2), line.size());
    } else {
      visit(at, unit);
    }
  }
}

/// The bracket that a start ends with, but for a comment; 0 if it is another kind of start.
uint32_t kind_of_start(unit_view line) {
  bool const is_comment = line.starts_with(u"//") || line.starts_with(u"/*") ||
                          line.starts_with(u"# ") || line.starts_with(u"#{");
  if (line.empty() || is_comment) return 0;
  uint32_t kind = 0;
  visit_code(line, [&](size_t at, char_t unit) {
    if (uint32_t const found = kind_of_opening(unit)) {
      unit_view const rest = without_blanks(line.substr(at + 1));
      if (rest.empty() || begins_comment(rest)) kind = kind != 0 ? kind : found;
    }
  });
  return kind;
}

/// Whether the line continues what the previous one began, as far as its own units show.
bool is_continuation(unit_view line) {
  if (line.empty()) return false;
  if (unit_view(u":,?&|+").find(line.front()) != line.npos) return true;
  int depth = 0, least = 0;
  visit_code(line, [&](size_t, char_t unit) {
    depth += unit == u'(' ? 1 : unit == u')' ? -1 : 0;
    least = std::min(least, depth);
  });
  return least < 0;
}

bool leaves_open(unit_view line) {
  return !line.empty() && unit_view(u",(=&|+?").find(line.back()) != line.npos;
}

int open_braces(unit_view line) {
  if (line.find_first_of(u"{}") == line.npos || begins_comment(line) || line.front() == u'*')
    return 0;
  int open = 0;
  visit_code(line, [&](size_t, char_t unit) { open += unit == u'{' ? 1 : unit == u'}' ? -1 : 0; });
  return open;
}

}  // namespace

/// What is open at a place, the innermost last.
class view::folding_filter::nesting {
 public:
  void open(opening const& what) { open_.push_back(what); }
  /// Removes what a stop closes, and what has been left open inside.
  std::optional<opening> close(opening const& stop) {
    size_t const least = open_.size() - std::min(open_.size(), most_open_looked_at);
    bool passed = false;
    for (size_t at = open_.size(); at-- > least;) {
      opening const found = open_[at];
      if (found.kind != stop.kind) continue;
      // That of the innermost block alone may be indented in another way.
      bool const is_continued = found.is_continued && found.indent > stop.indent && !passed;
      if (found.indent != stop.indent && !(found.is_block && is_continued)) {
        passed = passed || found.is_block;
        continue;
      }
      open_.resize(at);
      return found;
    }
    return std::nullopt;
  }
  void close_brace() {
    if (!open_.empty() && open_.back().kind == brace) open_.pop_back();
  }
  bool empty() const { return open_.empty(); }
  bool has_any_from(size_t line) const { return !open_.empty() && open_.front().line <= line; }

 private:
  std::vector<opening> open_;
};

view::folding_filter::folding_filter(text::view& view)
    : view_(view), open_(std::make_unique<nesting>()) {}

view::folding_filter::~folding_filter() = default;

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

view::folding_filter::mark view::folding_filter::parsed(size_t line) const {
  unit_view const units = units_of(line), text = without_blanks(units);
  mark result;
  result.is_known = true;
  result.type = parse_line(line);
  result.leaves_open = leaves_open(text);
  if (result.type == line_type::start) result.kind = kind_of_start(text);
  if (result.type == line_type::stop && !text.empty()) result.kind = kind_of_closing(text.front());
  int braces = open_braces(text);
  if (result.kind == brace) braces -= result.type == line_type::start ? 1 : -1;
  result.braces = std::clamp(braces, -most_braces, most_braces);
  if (!says_something(result)) return result;
  if (result.type == line_type::none) result.kind = brace;
  result.is_continued = is_continuation(text);
  size_t const indent = indent_width(units, tab_stops(view_.tab_size));
  result.indent = static_cast<uint32_t>(std::min(indent, widest_indent));
  return result;
}

/// Whether a line may be or change the end of a block; one that isn't known may.
bool view::folding_filter::says_something(mark const& known) {
  return !known.is_known || known.type != line_type::none || known.braces != 0;
}

/// What a line says, folded or not. Lines are asked when they are needed: those on screen, and
/// those up to where their partners are.
view::folding_filter::mark view::folding_filter::mark_at(size_t line) const {
  if (!has_patterns()) return mark{.is_known = true};
  if (marks_.empty()) marks_.assign(view_.storage->lines(), mark());
  mark& known = marks_[line];
  if (!known.is_known) known = parsed(line);
  return known;
}

std::optional<view::folding_filter::marker_t> view::folding_filter::marker(size_t line) const {
  mark const known = mark_at(line);
  if (known.type == line_type::none) return std::nullopt;
  return marker_t{static_cast<uint32_t>(line), known.type, known.indent};
}

view::folding_filter::opening view::folding_filter::opening_at(size_t line) const {
  mark const known = mark_at(line);
  bool const is_continued = known.is_continued || (line != 0 && mark_at(line - 1).leaves_open);
  bool const is_block = known.type != line_type::none;
  return {line, known.indent, known.kind, is_continued, is_block};
}

std::optional<view::folding_filter::opening> view::folding_filter::step(nesting& open,
                                                                        size_t line) const {
  mark const known = mark_at(line);
  std::optional<opening> found;
  if (known.type == line_type::stop) found = open.close(opening_at(line));
  opening const inside{line, known.indent, brace, false, false};
  for (int n = 0; n < known.braces; ++n) open.open(inside);
  for (int n = 0; n > known.braces; --n) open.close_brace();
  // What begins so far to the right is aligned with what the block is an argument of.
  if (known.type == line_type::stop && !found && known.braces < 0) open.close_brace();
  if (known.type == line_type::start) open.open(opening_at(line));
  return found && found->is_block ? found : std::nullopt;
}

/// After an edit: `line` has changed, the `lines_after` have gone, `added` ones are new.
void view::folding_filter::forget_marks(size_t line, size_t lines_after, size_t added) {
  auto const offset = [](size_t n) { return static_cast<std::ptrdiff_t>(n); };
  auto const replace = [&](auto& known, auto nothing) {
    if (known.empty()) return;
    auto const at = known.begin() + offset(line);
    *at = nothing;
    if (lines_after != 0) known.erase(at + 1, at + 1 + offset(lines_after));
    if (added != 0) known.insert(known.begin() + offset(line + 1), added, nothing);
  };
  replace(depths_, uint32_t{unknown_depth});
  if (marks_.empty()) return;
  auto const but_for_the_next_line = [](mark known) {
    known.leaves_open = false;
    return known;
  };
  auto const at = marks_.begin() + offset(line);
  bool keeps_pairs = line + lines_after < paired_ && added <= most_lines_looked_at &&
                     std::none_of(at + 1, at + 1 + offset(lines_after), says_something);
  bool const is_paired = line < paired_;
  mark const former = *at;
  replace(marks_, mark());
  if (!is_paired) {
    // The first line that isn't paired yet may continue another one now, which is seen then.
    return;
  }
  mark const now = mark_at(line);
  keeps_pairs = keeps_pairs && but_for_the_next_line(now) == but_for_the_next_line(former);
  for (size_t n = 1; keeps_pairs && n <= added; ++n)
    keeps_pairs = !says_something(mark_at(line + n));
  // What the next line continues has changed.
  size_t const next = line + added + 1;
  bool const other_line = now != former || added != 0 || lines_after != 0;
  if (keeps_pairs && other_line && next < marks_.size())
    keeps_pairs = !says_something(mark_at(next));
  if (!keeps_pairs) return forget_pairs();
  auto const after = has_start_.begin() + offset(line + 1);
  if (lines_after != 0) has_start_.erase(after, after + offset(lines_after));
  if (added != 0) has_start_.insert(has_start_.begin() + offset(line + 1), added, false);
  paired_ += added - lines_after;
}

/// Which of the stops up to `line` have a start.
void view::folding_filter::pair_marks(size_t line) const {
  if (paired_ == 0) {
    has_start_.clear();
    *open_ = {};
  }
  for (; paired_ <= line; ++paired_)
    has_start_.push_back(!is_end_of_fold(paired_) && step(*open_, paired_));
}

view::folding_filter::line_type view::folding_filter::folding_type(size_t line) {
  if (is_folded(line)) return line_type::folded;
  if (is_end_of_fold(line)) return line_type::none;
  auto const found = marker(line);
  if (found && found->type == line_type::start) return found->type;
  if (found) {
    pair_marks(line);
    if (has_start_[line]) return found->type;
  }
  return begins_indented(line) ? line_type::start : line_type::none;
}

std::optional<size_t> view::folding_filter::stop_of(size_t start, size_t end, bool& is_open) const {
  nesting open;
  opening const first = opening_at(start);
  open.open(first);
  is_open = false;
  for (size_t line = start + 1; line < end; ++line) {
    if (is_end_of_fold(line)) continue;
    bool const is_stop = mark_at(line).type == line_type::stop;
    auto const found = step(open, line);
    if (found && found->line == start) return line;
    if (open.empty()) return std::nullopt;
    if (!is_stop || found) continue;
    // It closes something around.
    opening const stop = opening_at(line);
    if (stop.kind == first.kind && stop.indent < first.indent) return std::nullopt;
  }
  is_open = end < view_.storage->lines();
  return std::nullopt;
}

/// Not looked for farther than drawing has time for: there may be one further down.
bool view::folding_filter::may_have_stop(size_t start) const {
  bool is_open = false;
  size_t const end = std::min<size_t>(view_.storage->lines(), start + farthest_stop);
  return stop_of(start, end, is_open) || is_open;
}

view::folding_filter::line_type view::folding_filter::mark_of(size_t line) {
  line_type const type = folding_type(line);
  if (type != line_type::start || begins_indented(line)) return type;
  return may_have_stop(line) ? type : line_type::none;
}

std::optional<view::folding_filter::folding_t> view::folding_filter::marked_around(
    size_t line) const {
  nesting open;
  for (size_t at = 0; at < view_.storage->lines(); ++at) {
    if (at > line && !open.has_any_from(line)) break;
    if (is_end_of_fold(at)) continue;
    auto const found = step(open, at);
    if (found && found->line <= line && line <= at)
      return folding_t{static_cast<uint32_t>(found->line), static_cast<uint32_t>(at)};
  }
  return std::nullopt;
}

std::optional<view::folding_filter::folding_t> view::folding_filter::block_around(
    size_t line) const {
  auto const marked = marked_around(line), indented = indented_around(line);
  if (!marked || !indented) return marked ? marked : indented;
  bool const is_inner = indented->first > marked->first && !hides_indentation(marked->first);
  return is_inner ? indented : marked;
}

/// The blocks between two lines, inner ones before those around them, folded or not.
std::vector<view::folding_filter::block> view::folding_filter::blocks(size_t first,
                                                                      size_t last) const {
  std::vector<block> result;
  nesting open;
  for (size_t line = first; line < last; ++line)
    if (auto const found = step(open, line))
      result.push_back({{static_cast<uint32_t>(found->line), static_cast<uint32_t>(line)}, 1});
  if (ignored_pattern) add_indented(first, last, result);
  // A start without a stop is no block, so that the levels after it don't depend on it.
  std::vector<folding_t> around;  // those that `block` is in, or may be
  for (auto block = result.rbegin(); block != result.rend(); ++block) {
    while (!around.empty() && block->lines.last < around.back().first) around.pop_back();
    around.push_back(block->lines);
    block->level = around.size();
  }
  return result;
}

size_t view::folding_filter::level_of(size_t line) const {
  for (block const& found : blocks(0, view_.storage->lines()))
    if (found.lines.first == line || found.lines.last == line) return found.level;
  return 0;
}

// Blocks by indentation

/// How far a line is indented, as a number that only compares; 0 if it doesn't count. An item of a
/// list, "- a", is in the line above that stands as far to the left.
size_t view::folding_filter::depth(size_t line) const {
  if (depths_.empty()) depths_.assign(view_.storage->lines(), uint32_t{unknown_depth});
  uint32_t& known = depths_[line];
  if (known != unknown_depth) return known;
  unit_view const units = units_of(line), text = without_blanks(units);
  bool const counts =
      !text.empty() && !oniguruma::find(units.data(), 0, static_cast<std::ptrdiff_t>(units.size()),
                                        ignored_pattern.get());
  bool const is_item = text == u"-" || text.starts_with(u"- ");
  size_t const indent = indent_width(units, tab_stops(view_.tab_size));
  known = counts ? static_cast<uint32_t>(2 * std::min(indent, widest_indent) + 1 + is_item) : 0;
  return known;
}

/// As "):" does, which ends the head of a function whose body follows.
bool view::folding_filter::closes_bracket(size_t line) const {
  mark const known = mark_at(line);
  return known.type == line_type::stop && known.kind != 0;
}

bool view::folding_filter::begins_indented(size_t line) const {
  if (!ignored_pattern || depth(line) == 0) return false;
  size_t const end = std::min(view_.storage->lines(), line + farthest_next);
  for (size_t next = line + 1; next < end; ++next)
    if (depth(next) != 0) return depth(next) > depth(line);
  return false;
}

/// Whether what the marked block that begins on `line` holds has no blocks by indentation: brackets
/// and strings, but not regions of comments or the documents of a stream.
bool view::folding_filter::hides_indentation(size_t line) const {
  return mark_at(line).type == line_type::start && depth(line) != 0 &&
         !units_of(line).starts_with(u"--");
}

/// The last line of the block that begins on `line`; `line` without one. What stands between the
/// marks of a block in it, such as a string of several lines, may be indented less.
size_t view::folding_filter::end_of_indented(size_t line) const {
  size_t const own = depth(line);
  size_t last = line;
  for (size_t at = line + 1; at < view_.storage->lines(); ++at) {
    size_t const found = depth(at);
    if (found == 0) continue;
    if (found < own || (found == own && !closes_bracket(at))) break;
    last = at;
    bool is_open = false;
    if (!hides_indentation(at)) continue;
    if (auto const stop =
            stop_of(at, std::min(view_.storage->lines(), at + farthest_stop), is_open))
      last = at = *stop;
  }
  return last;
}

std::optional<view::folding_filter::folding_t> view::folding_filter::indented_around(
    size_t line) const {
  if (!ignored_pattern) return std::nullopt;
  size_t least = depth(line) == 0 ? widest_indent * 2 : depth(line) + 1;
  for (size_t at = line + 1; at-- > 0;) {
    size_t const found = depth(at);
    bool is_less = found != 0 && found < least;
    // The head of a function, above the line that ends it.
    if (found != 0 && found == least && at != line && closes_bracket(line)) is_less = true;
    if (!is_less) continue;
    least = found;
    if (!begins_indented(at) || is_end_of_fold(at)) continue;
    bool is_open = false;
    bool const is_start = mark_at(at).type == line_type::start;
    if (is_start && stop_of(at, view_.storage->lines(), is_open)) continue;
    size_t const last = end_of_indented(at);
    if (last >= line && last > at)
      return folding_t{static_cast<uint32_t>(at), static_cast<uint32_t>(last)};
  }
  return std::nullopt;
}

struct view::folding_filter::indented {
  size_t line, depth, last;
};

/// Adds them to those by marks, which begin what they begin.
void view::folding_filter::add_indented(size_t first, size_t last,
                                        std::vector<block>& blocks) const {
  std::vector<std::pair<size_t, size_t>> marked;  // from the first line to the last
  for (block const& found : blocks) marked.emplace_back(found.lines.first, found.lines.last);
  std::sort(marked.begin(), marked.end());
  std::vector<indented> open;
  auto const close = [&] {
    indented const done = open.back();
    open.pop_back();
    if (done.last > done.line)
      blocks.push_back({{static_cast<uint32_t>(done.line), static_cast<uint32_t>(done.last)}, 1});
    if (!open.empty()) open.back().last = std::max(open.back().last, done.last);
  };
  for (size_t line = first; line < last; ++line) {
    size_t const found = depth(line);
    if (found == 0) continue;
    bool const closes = closes_bracket(line);
    while (!open.empty() && (open.back().depth > found || (open.back().depth == found && !closes)))
      close();
    if (!open.empty()) open.back().last = line;
    auto const at = std::lower_bound(marked.begin(), marked.end(), std::pair(line, size_t{0}));
    bool const is_marked = at != marked.end() && at->first == line;
    if (is_marked && hides_indentation(line)) {
      line = at->second;
      if (!open.empty()) open.back().last = line;
    } else if (!is_marked) {
      open.push_back({line, found, line});
    }
  }
  while (!open.empty()) close();
  std::sort(blocks.begin(), blocks.end(), [](block const& a, block const& b) {
    return a.lines.last != b.lines.last ? a.lines.last < b.lines.last
                                        : a.lines.first > b.lines.first;
  });
}

}  // namespace text
