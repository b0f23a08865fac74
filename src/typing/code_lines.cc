#include "typing/code_lines.h"

#include "grammar/tokenize_filter.h"
#include "styles/typing_pairs.h"
#include "text/row_break.h"
#include "text/tab_width.h"
#include "typing/typed_view.h"

#include <algorithm>

namespace typing {
namespace {

constexpr std::size_t furthest_line = 200;      // where a walk up ends at the latest
constexpr std::size_t furthest_bracket = 2000;  // where that for a bracket does
constexpr std::size_t patterns_kept = 8;

bool is_opening(text::char_t unit) {
  return unit == u'(' || unit == u'[' || unit == u'{';
}

bool is_closing(text::char_t unit) {
  return unit == u')' || unit == u']' || unit == u'}';
}

std::size_t leading_blanks(text::unit_view line) {
  return std::min(line.find_first_not_of(u" \t"), line.size());
}

// Strings and comments have a pattern that no line is indented by; so have some languages.
bool is_of_text(plist::value const& settings) {
  return settings[styles::indent_patterns::keys[0]].string_or("") == "^";
}

}  // namespace

std::shared_ptr<styles::indent_patterns const> recent_patterns::of(plist::value const& settings) {
  auto found = std::find_if(kept_.begin(), kept_.end(),
                            [&](auto const& kept) { return kept->are_of(settings); });
  if (found == kept_.end()) {
    if (kept_.size() == patterns_kept) kept_.pop_back();
    found = kept_.insert(kept_.begin(), std::make_shared<styles::indent_patterns const>(settings));
  }
  kept_.splice(kept_.begin(), kept_, found);
  return kept_.front();
}

code_lines::code_lines(typed_view& text_view, recent_patterns& patterns,
                       std::chrono::seconds patience)
    : text_view_(text_view), patterns_(patterns), patience_(patience) {}

// In batch mode results must be reproducible; while typing there must be no wait. Languages without
// indentation patterns are not asked for scopes.
void code_lines::wait_for_scopes(std::size_t line) const {
  if (text_view_.tokenizer() == nullptr || !text_view_.mayIndentLines()) return;
  auto const limit = text_view_.isSeen() ? patience_ : std::chrono::hours(1);
  if (limit.count() > 0) text_view_.tokenizer()->wait_for(line, limit);
}

text::storage& code_lines::storage() const {
  return *text_view_.view()->storage;
}

std::size_t code_lines::tab_size() const {
  return text_view_.tabSize();
}

std::size_t code_lines::width_of(std::size_t number) const {
  return text::indent_width(storage().line_units(number), text::tab_stops(tab_size()));
}

// Where a string or a comment begins the line may still be indented, unlike in one.
plist::value code_lines::settings_of_line(std::size_t number) const {
  text::iterator const begin = storage().begin_of_line(number);
  plist::value const settings = text_view_.stylesForContext(text_view_.graphPathForIterator(begin));
  return is_of_text(settings) ? text_view_.stylesForTypingAt(begin) : settings;
}

std::shared_ptr<styles::indent_patterns const> code_lines::patterns_of_line(std::size_t number) {
  return patterns_.of(settings_of_line(number));
}

unsigned code_lines::type_of_line(std::size_t number) {
  std::optional<unsigned>& type = facts_[number].type;
  if (!type) {
    text::unit_view const line = storage().line_units(number);
    auto const patterns = patterns_of_line(number);
    type = patterns->typeForLine(line);
    text::unit_view const code = code_before(storage().end(number));
    if (*type != styles::indent_patterns::unindented && !code.empty() &&
        code.size() < line.size()) {
      constexpr unsigned by_end =
          styles::indent_patterns::increase | styles::indent_patterns::next_line;
      type = (*type & ~by_end) | (patterns->typeForLine(code) & by_end);
    }
  }
  return *type;
}

// As if both lines were one, each without the comment that it ends with. What a bracket alone opens
// is said by the first.
unsigned code_lines::type_of_statement(std::size_t first, std::size_t last) {
  unsigned const type = type_of_line(last);
  if (first == last) return type;
  std::u16string joined(code_before(storage().end(first)));
  joined += code_before(storage().end(last));
  constexpr unsigned by_end =
      styles::indent_patterns::increase | styles::indent_patterns::next_line;
  return (begins_with_bracket(last) ? type & ~by_end : type) |
         (patterns_of_line(first)->typeForLine(joined) & by_end);
}

std::optional<std::size_t> code_lines::counting_line_above(std::size_t number) {
  for (std::size_t line = number; line-- > number - std::min(number, furthest_line);) {
    if (type_of_line(line) == styles::indent_patterns::unindented) continue;
    std::size_t const last = line;
    while (line > 0 && goes_on_below(line - 1)) --line;
    if (line == last || type_of_line(line) != styles::indent_patterns::unindented) return last;
  }
  return std::nullopt;
}

bool code_lines::is_in_prose(text::iterator const& at) const {
  plist::value const settings = text_view_.stylesForContext(text_view_.graphPathForIterator(at));
  return settings["smartTypingPairsEndWithLine"].integer_or(0) != 0 && is_of_text(settings);
}

text::unit_view code_lines::code_before(text::iterator const& place) const {
  text::unit_view line = storage().line_units(place.line).substr(0, place.column);
  while (!line.empty() && is_in_prose({place.line, line.size() - 1, &storage()}))
    line.remove_suffix(1);
  return line;
}

// In comments, strings and running text brackets need not be closed, and some languages have ones
// that are no pair.
bool code_lines::is_bracket(text::iterator const& at) const {
  text::char_t const unit = *at;
  if (!is_opening(unit) && !is_closing(unit)) return false;
  plist::value const settings = text_view_.stylesForContext(text_view_.graphPathForIterator(at));
  if (is_of_text(settings) || settings["smartTypingPairsEndWithLine"].integer_or(0) != 0)
    return false;
  auto const pairs = styles::pairs_of_settings(settings, "highlightPairs");
  return std::any_of(pairs.begin(), pairs.end(), [&](styles::unit_pair const pair) {
    return unit == pair.open || unit == pair.close;
  });
}

code_lines::brackets const& code_lines::brackets_of(std::size_t number) {
  std::optional<brackets>& found = facts_[number].found;
  if (found) return *found;
  found = brackets();
  text::unit_view const line = storage().line_units(number);
  std::size_t const blanks = leading_blanks(line);
  bool only_closing = true;
  for (std::size_t unit = blanks; unit < line.size(); ++unit) {
    bool const is_one = is_bracket({number, unit, &storage()});
    only_closing &= is_one && is_closing(line[unit]);
    if (!is_one) continue;
    if (is_opening(line[unit]))
      found->open.push_back({number, unit - blanks});
    else if (!found->open.empty())
      found->open.pop_back();
    else
      ++found->closed;
    if (only_closing) ++found->leading;
  }
  return *found;
}

std::optional<code_lines::bracket> code_lines::open_bracket_above(std::size_t number,
                                                                  std::size_t inner) {
  std::size_t closed = inner;
  for (std::size_t line = number; line-- > number - std::min(number, furthest_bracket);) {
    brackets const& here = brackets_of(line);
    if (here.open.size() > closed) return here.open[here.open.size() - 1 - closed];
    closed += here.closed - here.open.size();
  }
  return std::nullopt;
}

// Also where the lines inside aren't indented more, as in namespaces.
bool code_lines::opens_blocks(bracket const& open) {
  text::unit_view const line = storage().line_units(open.line);
  return patterns_of_line(open.line)->matches(styles::indent_patterns::increase,
                                              line.substr(leading_blanks(line) + open.offset, 1));
}

bool code_lines::begins_with_bracket(std::size_t number) {
  text::unit_view const line = storage().line_units(number);
  std::size_t const blanks = leading_blanks(line);
  return blanks < line.size() && is_opening(line[blanks]) &&
         is_bracket({number, blanks, &storage()});
}

bool code_lines::ends_with_bracket(std::size_t number) {
  brackets const& here = brackets_of(number);
  if (here.open.empty()) return false;
  text::unit_view const code = code_before(storage().end(number));
  std::size_t const open = leading_blanks(code) + here.open.back().offset;
  return open + 1 >= code.size() || code.find_first_not_of(u" \t", open + 1) == code.npos;
}

std::size_t code_lines::line_of_brackets(std::size_t number) {
  std::size_t closed = brackets_of(number).closed, line = number;
  while (closed > 0 && line > 0 && number - line < furthest_line / 2) {
    brackets const& here = brackets_of(--line);
    closed = here.closed + (closed - std::min(closed, here.open.size()));
  }
  return closed == 0 ? line : number;
}

std::size_t code_lines::first_line_of(std::size_t number) {
  std::size_t closed = 0;
  for (std::size_t line = number + 1; line-- > number - std::min(number, furthest_line / 2);) {
    brackets const& here = brackets_of(line);
    closed = here.closed + (closed - std::min(closed, here.open.size()));
    if (closed != 0) continue;
    if (line == 0) return line;
    auto const above = line_going_on_to(line);
    if (!above && !may_continue_above(line)) return line;
    if (above) line = *above + 1;
  }
  return number;
}

// The one above, or one before comments.
std::optional<std::size_t> code_lines::line_going_on_to(std::size_t number) {
  if (number == 0) return std::nullopt;
  if (goes_on_below(number - 1)) return number - 1;
  if (type_of_line(number - 1) != styles::indent_patterns::unindented) return std::nullopt;
  auto const above = counting_line_above(number);
  bool const goes_on = above && !is_blank_between(*above, number) && goes_on_below(*above);
  return goes_on ? above : std::nullopt;
}

bool code_lines::is_blank_between(std::size_t above, std::size_t number) const {
  while (++above < number)
    if (leading_blanks(storage().line_units(above)) == storage().size(above)) return true;
  return false;
}

bool code_lines::goes_on_below(std::size_t number) {
  std::optional<bool>& known = facts_[number].goes_on;
  if (!known) known = find_going_on(number);
  return *known;
}

// Whether a line ends with a backslash or an operator, or the following one begins as the language
// begins those that continue another one.
bool code_lines::find_going_on(std::size_t number) {
  text::storage& text = storage();
  text::unit_view line = text.line_units(number);
  if (line.ends_with(u'\\')) return true;
  while (!line.empty() &&
         (text::is_blank(line.back()) || is_in_prose({number, line.size() - 1, &text})))
    line.remove_suffix(1);
  bool const is_operand =
      line.ends_with(u"$?") || line.ends_with(u"++") ||
      patterns_of_line(number)->matches(styles::indent_patterns::complete, line);
  if (!line.empty() && !is_operand && text::unit_view(u"=&|?+").find(line.back()) != line.npos)
    return true;
  if (number + 1 == text.lines()) return false;
  std::u16string lines(text.line_units(number));
  lines += u'\n';
  lines += text.line_units(number + 1);
  return patterns_of_line(number)->matches(styles::indent_patterns::continued, lines);
}

bool code_lines::may_continue(std::size_t above, std::size_t number) {
  return is_unfinished(above) && !is_blank_between(above, number) &&
         type_of_statement(line_of_brackets(above), above) == 0;
}

bool code_lines::is_unfinished(std::size_t number) {
  if (type_of_line(number) != 0) return false;
  std::optional<bool>& known = facts_[number].unfinished;
  if (!known) {
    auto const patterns = patterns_of_line(number);
    known =
        patterns->know(styles::indent_patterns::complete) &&
        !patterns->matches(styles::indent_patterns::complete, code_before(storage().end(number)));
  }
  return *known;
}

// By being indented more than a line that isn't at an end, or as much as one that does the same.
bool code_lines::may_continue_above(std::size_t number) {
  std::size_t const width = width_of(number);
  for (std::size_t line = number; line > number - std::min(number, furthest_line / 2);) {
    auto const above = counting_line_above(line);
    if (!above || !may_continue(*above, line)) return false;
    std::size_t const first = line_of_brackets(*above);
    if (width_of(first) > width) return false;
    if (width_of(first) < width || line_going_on_to(first)) return true;
    if (line == number && begins_with_bracket(number)) return true;
    line = first;
  }
  return false;
}

std::optional<std::size_t> code_lines::line_continued_by(std::size_t number) {
  if (auto const above = line_going_on_to(number)) return first_line_of(*above);
  auto const open = open_bracket_above(number);
  if (!open) return std::nullopt;
  if (is_of_text(settings_of_line(open->line))) return open->line;
  bool const is_last =
      brackets_of(open->line).open.back().offset == open->offset && ends_with_bracket(open->line);
  if (is_last &&
      (opens_blocks(*open) || type_of_line(open->line) & styles::indent_patterns::increase))
    return std::nullopt;
  return first_line_of(open->line);
}

std::vector<std::size_t> code_lines::beginnings_of(std::size_t number) {
  std::vector<std::size_t> lines;
  std::optional<std::size_t> last = number;
  do {
    lines.push_back(first_line_of(*last));
    last = counting_line_above(lines.back());
  } while (last && number - *last < furthest_line && may_continue(*last, lines.back()));
  return lines;
}

}  // namespace typing
