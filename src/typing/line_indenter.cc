#include "typing/line_indenter.h"

#include "actions/indent.h"
#include "actions/selecting.h"
#include "text/row_break.h"
#include "text/tab_width.h"
#include "text/views/view.h"
#include "typing/code_lines.h"
#include "typing/kept_indents.h"
#include "typing/pair_typing.h"
#include "typing/typed_view.h"

#include <algorithm>
#include <limits>

namespace typing {
namespace {

bool is_blank_line(text::unit_view line) {
  return line.find_first_not_of(u" \t") == line.npos;
}

std::size_t leading_blanks(text::unit_view line) {
  return std::min(line.find_first_not_of(u" \t"), line.size());
}

constexpr std::size_t furthest_line = 200;    // where the look up ends at the latest
constexpr std::size_t furthest_block = 2000;  // where that for the beginning of a block does

bool begins_with_space(text::unit_view line) {
  return !line.empty() && line.front() == u' ';
}

// As the nearest line above, or this one, that is indented; a single space is no indentation.
bool is_indented_by_spaces(text::storage const& text, std::size_t number) {
  std::size_t const top = number - std::min(number, furthest_line);
  for (std::size_t line = number + 1; line-- > top;) {
    text::unit_view const units = text.line_units(line);
    if (units.starts_with(u"\t")) return false;
    if (units.starts_with(u"  ")) return true;
  }
  return false;
}

// What its first line of text says about where a clip belongs.
text::unit_view telling_line(text::unit_view clip, styles::indent_patterns const& patterns) {
  while (!clip.empty()) {
    std::size_t const length = std::min(clip.find(u'\n'), clip.size());
    text::unit_view const line = clip.substr(0, length);
    if (!is_blank_line(line) && patterns.typeForLine(line) != styles::indent_patterns::unindented)
      return line;
    clip.remove_prefix(std::min(length + 1, clip.size()));
  }
  return {};
}

}  // namespace

line_indenter::line_indenter(typed_view& text_view) : text_view_(text_view) {}

text::view& line_indenter::view() const {
  return *text_view_.view();
}

std::size_t line_indenter::tab_size() const {
  return text_view_.tabSize();
}

std::shared_ptr<styles::indent_patterns const> line_indenter::language_patterns() {
  return patterns_.of(text_view_.mayIndentLines() ? text_view_.stylesForCaretWait(false)
                                                  : plist::value());
}

// Lines of which the last one closes what the first one has opened, or continues it, count as one,
// which is indented like the first and opens a block if the last or both together do.
std::size_t line_indenter::wanted_indent(code_lines& lines, styles::indent_patterns const& patterns,
                                         text::unit_view content, std::size_t number) {
  std::size_t first = number;
  unsigned type = 0;
  auto const types = [&](std::size_t line) -> unsigned {
    if (line + 1 == number) first = number;
    if (line >= first) return line == first ? type : unsigned(styles::indent_patterns::unindented);
    type = lines.type_of_line(line);
    if (type == styles::indent_patterns::unindented) return type;
    first = lines.first_line_of(line);
    if (first == line) return type;
    if (lines.type_of_line(first) == styles::indent_patterns::unindented)
      return type = styles::indent_patterns::unindented;
    type = lines.type_of_statement(first, line);
    return line == first ? type : unsigned(styles::indent_patterns::unindented);
  };
  return patterns.indentForContentAtLine(content, number, *view().storage, tab_size(), types);
}

// Text indented by spaces stays indented by spaces, also where tabs are what is typed.
bool line_indenter::indents_by_spaces(std::size_t number) const {
  return text_view_.treatsSpacesAsTabs() || is_indented_by_spaces(*view().storage, number);
}

// Whether a line may be indented so where nothing but indentation ends a block: more than the line
// that opens one, or as one of the blocks that are open.
bool line_indenter::may_end_blocks(code_lines& lines, line_indent proposed) {
  if (lines.open_bracket_above(proposed.number)) return true;
  std::optional<std::size_t> open;
  for (std::size_t line = proposed.number;
       line-- > proposed.number - std::min(proposed.number, furthest_block);) {
    std::size_t const last = line;
    unsigned type = lines.type_of_line(last);
    if (type == styles::indent_patterns::unindented) continue;
    line = lines.first_line_of(last);
    if (!open) type = lines.type_of_statement(line, last);
    std::size_t const width = lines.width_of(line);
    if (!open && type & styles::indent_patterns::increase) return proposed.columns > width;
    open = std::min(open.value_or(width), width);
    if (*open <= proposed.columns) return *open == proposed.columns;
  }
  return proposed.columns == 0;
}

std::size_t line_indenter::own_or_wanted_indent(code_lines& lines, kept_indents& kept,
                                                std::size_t number) {
  text::unit_view const line = view().storage->line_units(number);
  std::size_t const own = lines.width_of(number);
  auto const patterns = lines.patterns_of_line(number);
  if (!patterns->know_indentation() ||
      lines.type_of_line(number) == styles::indent_patterns::unindented)
    return own;
  std::size_t const wanted = wanted_indent(lines, *patterns, line, number);
  if (lines.settings_of_line(number)["indentationEndsBlocks"].integer_or(0) == 0)
    return kept.of_line({number, wanted});
  bool const keeps =
      own == wanted || lines.line_continued_by(number) || may_end_blocks(lines, {number, own});
  return keeps ? own : wanted;
}

// A line of blanks alone loses them.
void line_indenter::set_indent(line_indent wanted) {
  text::storage& storage = *view().storage;
  text::unit_view const line = storage.line_units(wanted.number);
  std::size_t const old = leading_blanks(line);
  std::u16string fresh;
  if (old < line.size()) {
    if (text::indent_width(line, text::tab_stops(tab_size())) == wanted.columns) return;
    fresh = actions::indent::blanks(wanted.columns, tab_size(), indents_by_spaces(wanted.number));
  }
  if (line.substr(0, old) == fresh) return;
  text::iterator const at = storage.begin_of_line(wanted.number);
  storage.erase(at, at + static_cast<std::ptrdiff_t>(old));
  storage.insert(at, fresh.begin(), fresh.end());
}

// The caret stays before the unit at which it is; several lines stay selected as a whole.
void line_indenter::indent_selected_lines() {
  text::storage& storage = *view().storage;
  auto const [first, last] = actions::selected_lines(view());
  text::iterator const caret = view().selection.current_mark.base;
  std::size_t const after_caret = storage.size(caret.line) - caret.column;
  bool const had_selection = view().has_selection();
  code_lines lines(text_view_, patterns_, std::chrono::seconds(5));
  kept_indents kept(lines);
  for (std::size_t line = first; line <= last; ++line) {
    lines.wait_for_scopes(line);
    bool const has_text = !is_blank_line(storage.line_units(line));
    if (!has_text &&
        lines.patterns_of_line(line)->typeForLine(u"x") == styles::indent_patterns::unindented)
      continue;
    std::size_t const old = lines.width_of(line);
    std::size_t const fresh = has_text ? own_or_wanted_indent(lines, kept, line) : 0;
    set_indent({line, fresh});
    kept.line_was_moved(line,
                        static_cast<std::ptrdiff_t>(fresh) - static_cast<std::ptrdiff_t>(old));
  }
  if (!had_selection) {
    std::size_t const size = storage.size(caret.line);
    text::iterator const at(caret.line, size - std::min(size, after_caret), &storage);
    return view().selection.set_caret({&view(), at});
  }
  bool const has_next = last + 1 < storage.lines();
  view().selection.set_caret(view().in_view(storage.begin_of_line(first)));
  view().selection.select_to(
      view().in_view(has_next ? storage.begin_of_line(last + 1) : storage.end(last)), false);
}

bool line_indenter::types_at_line_end() const {
  if (!text_view_.autoIndent() || view().has_selection() || !view().mirror_observer.mirrors.empty())
    return false;
  return is_at_end_of_typed(text_view_);
}

bool line_indenter::may_close_block() {
  if (!types_at_line_end()) return false;
  auto const patterns = language_patterns();
  if (!patterns->know_indentation()) return false;
  text::iterator const caret = view().selection.current_mark.base;
  return !patterns->matches(styles::indent_patterns::decrease,
                            view().storage->line_units(caret.line).substr(0, caret.column));
}

// After so many units have been typed. A line that had text before, and that the user has indented
// in another way than the language would, is left as it is. What stands after the caret are
// closing units that wait to be typed over.
void line_indenter::indent_closing_line(std::size_t typed) {
  text::storage& storage = *view().storage;
  text::iterator const caret = view().selection.current_mark.base;
  text::unit_view const line = storage.line_units(caret.line);
  if (caret.column < typed || !view().mirror_observer.mirrors.empty()) return;
  if (!language_patterns()->matches(styles::indent_patterns::decrease,
                                    line.substr(0, caret.column)))
    return;
  text::unit_view const before = line.substr(0, caret.column - typed);
  code_lines lines(text_view_, patterns_, {});
  if (!is_blank_line(before) && text::indent_width(before, text::tab_stops(tab_size())) !=
                                    wanted_indent(lines, *language_patterns(), before, caret.line))
    return;
  std::size_t const after_caret = line.size() - caret.column;
  set_indent({caret.line, wanted_indent(lines, *language_patterns(), line, caret.line)});
  view().selection.set_caret(
      {&view(), text::iterator(caret.line, storage.size(caret.line) - after_caret, &storage)});
}

// The leading white space of a line. Where tabs are typed, what follows them is alignment and isn't
// taken over; they may stand after the mark of a comment.
std::u16string line_indenter::taken_indent(std::size_t number) const {
  text::unit_view line = view().storage->line_units(number);
  bool const tabs_only = !text_view_.treatsSpacesAsTabs() && !begins_with_space(line);
  if (tabs_only) {
    bool const comment = line.starts_with(u"//\t") || line.starts_with(u"/*\t");
    if (comment || line.starts_with(u"*/")) line.remove_prefix(2);
  }
  auto const text = line.find_first_not_of(tabs_only ? u"\t" : u" \t");
  return std::u16string(line.substr(0, std::min(text, line.size())));
}

void line_indenter::insert_newline() {
  std::u16string before = u"\n", after;
  if (text_view_.smartTyping()) end_pairs_of_line(text_view_);
  if (text_view_.autoIndent()) {
    text::iterator const at = view().selection.first().base;
    text::unit_view const line = view().storage->line_units(at.line);
    before += taken_indent(at.line);
    bool const in_braces = !view().has_selection() && 0 < at.column && at.column < line.size() &&
                           line[at.column - 1] == u'{' && line[at.column] == u'}';
    if (in_braces) after = before;
    code_lines lines(text_view_, patterns_, {});
    lines.wait_for_scopes(at.line);
    text::unit_view const code = lines.code_before(at);
    auto const patterns = language_patterns();
    bool const at_end = is_blank_line(line.substr(std::min<std::size_t>(at.column, line.size())));
    bool const at_end_of_typed =
        at_end || (!view().has_selection() && is_at_end_of_typed(text_view_));
    if (patterns->matches(styles::indent_patterns::increase, code) ||
        (at_end_of_typed && patterns->matches(styles::indent_patterns::next_line, code)))
      before += actions::indent::blanks(tab_size(), tab_size(), indents_by_spaces(at.line));
    else if (auto const back =
                 at_end ? kept_indents(lines).after_single_line(at.line) : std::nullopt)
      before = u"\n" + actions::indent::blanks(*back, tab_size(), indents_by_spaces(at.line));
  }
  view().insert(before.begin(), before.end());
  if (after.empty()) return;
  text::iterator const caret = view().selection.current_mark.base;
  view().insert(after.begin(), after.end());
  view().selection.set_caret({&view(), caret});
}

bool line_indenter::copy() {
  if (!view().has_selection() || view().is_in_column_mode()) return actions::view_copy(&view());
  actions::text_clip clip{
      {view().selection.begin(), view().selection.end()}, false, actions::clip_origin()};
  text::iterator const first = view().selection.first().base;
  text::unit_view const line = view().storage->line_units(first.line);
  clip.origin->indent = text::indent_width(line, text::tab_stops(tab_size()));
  clip.origin->column =
      text::expanded_width(line.substr(0, first.column), 0, text::tab_stops(tab_size()));
  if (first.column == 0 && text_view_.mayIndentLines())
    clip.origin->excess = excess_of(clip.text, first.line);
  actions::set_current_clip(std::move(clip));
  return true;
}

// Of lines that were copied from their start, or 0 where the language doesn't say.
std::ptrdiff_t line_indenter::excess_of(std::u16string const& lines_text, std::size_t line) {
  code_lines lines(text_view_, patterns_, {});
  lines.wait_for_scopes(line);
  auto const patterns = language_patterns();
  text::unit_view const content = telling_line(lines_text, *patterns);
  if (content.empty() || !patterns->know_indentation()) return 0;
  return static_cast<std::ptrdiff_t>(actions::indent::level(lines_text, tab_size())) -
         static_cast<std::ptrdiff_t>(wanted_indent(lines, *patterns, content, line));
}

bool line_indenter::paste(std::optional<actions::text_clip> const& clip) {
  bool const is_one_line = clip && clip->text.find(u'\n') == clip->text.npos;
  if (!text_view_.indentedPaste() || !clip || clip->rectangular || is_one_line)
    return actions::view_paste_clip(&view(), clip);
  view().erase_selection();
  code_lines(text_view_, patterns_, {}).wait_for_scopes(view().selection.current_mark.base.line);
  std::u16string const text = fitted(*clip);
  view().insert(text.begin(), text.end());
  return true;
}

// All lines but what the first one is before its text.
std::u16string line_indenter::shifted(std::u16string const& clip, std::ptrdiff_t by) const {
  if (by == 0) return clip;
  std::size_t const amount = static_cast<std::size_t>(by < 0 ? -by : by);
  std::size_t const line = view().selection.current_mark.base.line;
  if (by < 0) return actions::indent::cut_from_each_line(clip, amount, tab_size());
  std::u16string const prefix =
      actions::indent::blanks(amount, tab_size(), indents_by_spaces(line));
  return actions::indent::prefix_each_line(clip, prefix);
}

// Several lines, indented as fits the caret. Blanks that the user has put before it are where they
// belong, and so is the line after whose text they go; at a line's start the language tells.
std::u16string line_indenter::fitted(actions::text_clip const& clip) {
  text::iterator const caret = make_base_iter(view().selection.current_mark);
  text::unit_view const line = view().storage->line_units(caret.line);
  text::unit_view const before = line.substr(0, caret.column);
  bool const after_text = !is_blank_line(before);
  std::size_t const have = text::expanded_width(before, 0, text::tab_stops(tab_size()));
  std::size_t const level = actions::indent::level(clip.text, tab_size());
  if (level == std::numeric_limits<std::size_t>::max()) return clip.text;  // blank lines alone
  if (have == 0 && (!clip.origin || clip.origin->column == 0)) return fitted_to_line(clip, level);

  // What began inside a line goes where its first line goes.
  std::size_t const at = after_text ? text::indent_width(line, text::tab_stops(tab_size())) : have;
  if (clip.origin && clip.origin->column > 0) {
    actions::clip_origin const& origin = *clip.origin;
    bool const began_in_blanks = origin.column <= origin.indent;
    std::size_t const from = began_in_blanks && !after_text ? origin.column : origin.indent;
    std::size_t const blanks = began_in_blanks && after_text ? leading_blanks(clip.text) : 0;
    std::size_t const first = std::min(clip.text.find(u'\n'), clip.text.size());
    // The first line stands at the caret already.
    return clip.text.substr(blanks, first - blanks) +
           shifted(clip.text.substr(first),
                   static_cast<std::ptrdiff_t>(at) - static_cast<std::ptrdiff_t>(from));
  }
  auto const by = static_cast<std::ptrdiff_t>(at) - static_cast<std::ptrdiff_t>(level);
  std::u16string result = shifted(clip.text, by);
  if (by > 0)
    result.insert(0, actions::indent::blanks(static_cast<std::size_t>(by), tab_size(),
                                             indents_by_spaces(caret.line)));
  result.resize(result.find_last_not_of(u" \t") + 1);
  return result.substr(after_text ? leading_blanks(result)
                                  : actions::indent::skip(result, have, tab_size()));
}

// Whole lines at a line's start. They are never indented more than they were where indentation
// alone ends blocks, or on a line without text; and as much more or less than the language expects
// as they were where they come from.
std::u16string line_indenter::fitted_to_line(actions::text_clip const& clip, std::size_t level) {
  auto const kept = language_patterns();
  styles::indent_patterns const& patterns = *kept;
  std::size_t const number = view().selection.current_mark.base.line;
  text::unit_view const line = view().storage->line_units(number);
  text::unit_view const content = telling_line(clip.text, patterns);
  if (!patterns.know_indentation() || content.empty()) return clip.text;
  std::ptrdiff_t const excess = clip.origin ? clip.origin->excess : 0;
  code_lines lines(text_view_, patterns_, {});
  bool const may_grow = !is_blank_line(line) &&
                        lines.settings_of_line(number)["indentationEndsBlocks"].integer_or(0) == 0;
  std::ptrdiff_t const had = static_cast<std::ptrdiff_t>(level);
  std::ptrdiff_t want =
      static_cast<std::ptrdiff_t>(wanted_indent(lines, patterns, content, number)) +
      (may_grow ? excess : std::max<std::ptrdiff_t>(excess, 0));
  want = std::max<std::ptrdiff_t>(0, may_grow ? want : std::min(want, had));
  if (want == had) return clip.text;
  std::u16string result = shifted(clip.text, want - had);
  if (want > had)
    result.insert(0, actions::indent::blanks(static_cast<std::size_t>(want - had), tab_size(),
                                             indents_by_spaces(number)));
  return result;
}

}  // namespace typing
