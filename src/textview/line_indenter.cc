#include "textview/line_indenter.h"

#include "actions/clipboard.h"
#include "actions/indent.h"
#include "actions/selecting.h"
#include "text/tab_width.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/pair_typing.h"

#include <algorithm>
#include <limits>

namespace {

bool is_blank_line(text::unit_view line) {
  return line.find_first_not_of(u" \t") == line.npos;
}

std::size_t leading_blanks(text::unit_view line) {
  return std::min(line.find_first_not_of(u" \t"), line.size());
}

constexpr std::size_t furthest_line = 200;  // where the look up ends at the latest

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
text::unit_view telling_line(text::unit_view clip, indent_patterns const& patterns) {
  while (!clip.empty()) {
    std::size_t const length = std::min(clip.find(u'\n'), clip.size());
    text::unit_view const line = clip.substr(0, length);
    if (!is_blank_line(line) && patterns.typeForLine(line) != indent_patterns::unindented)
      return line;
    clip.remove_prefix(std::min(length + 1, clip.size()));
  }
  return {};
}

}  // namespace

line_indenter::line_indenter(WynTextView& text_view) : text_view_(text_view) {}

text::view& line_indenter::view() const {
  return *text_view_.view();
}

std::size_t line_indenter::tab_size() const {
  return text_view_.tabSize();
}

indent_patterns const& line_indenter::language_patterns() {
  plist::value const settings =
      text_view_.mayIndentLines() ? text_view_.stylesForCaretWait(false) : plist::value();
  if (!patterns_ || !patterns_->are_of(settings)) patterns_.emplace(settings);
  return *patterns_;
}

std::size_t line_indenter::wanted_indent(text::unit_view content, std::size_t number) {
  return language_patterns().indentForContentAtLine(content, number, *view().storage, tab_size());
}

// Text that is indented by spaces goes on so, also where tabs are what is typed.
bool line_indenter::indents_by_spaces(std::size_t number) const {
  return text_view_.treatsSpacesAsTabs() || is_indented_by_spaces(*view().storage, number);
}

// A line of blanks alone loses them.
void line_indenter::indent_line(std::size_t number) {
  text::storage& storage = *view().storage;
  text::unit_view const line = storage.line_units(number);
  std::size_t const old = leading_blanks(line);
  std::u16string fresh;
  if (old < line.size())
    fresh = indent::blanks(wanted_indent(line, number), tab_size(), indents_by_spaces(number));
  if (line.substr(0, old) == fresh) return;
  text::iterator const at = storage.begin_of_line(number);
  storage.erase(at, at + static_cast<std::ptrdiff_t>(old));
  storage.insert(at, fresh.begin(), fresh.end());
}

// The caret stays before the unit at which it is; several lines stay selected as a whole.
void line_indenter::indent_selected_lines() {
  text::storage& storage = *view().storage;
  auto const [first, last] = selected_lines(view());
  text::iterator const caret = view().selection.current_mark.base;
  std::size_t const behind_caret = storage.size(caret.line) - caret.column;
  bool const had_selection = view().has_selection();
  for (std::size_t line = first; line <= last; ++line) indent_line(line);
  if (!had_selection) {
    std::size_t const size = storage.size(caret.line);
    text::iterator const at(caret.line, size - std::min(size, behind_caret), &storage);
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
  indent_patterns const& patterns = language_patterns();
  if (!patterns.know_indentation()) return false;
  text::iterator const caret = view().selection.current_mark.base;
  return !patterns.matches(indent_patterns::decrease,
                           view().storage->line_units(caret.line).substr(0, caret.column));
}

// After so many units have been typed. A line that had text before, and that the user has indented
// in another way than the language would, is left as it is. What stands behind the caret are
// closing units that wait to be typed over.
void line_indenter::indent_closing_line(std::size_t typed) {
  text::storage& storage = *view().storage;
  text::iterator const caret = view().selection.current_mark.base;
  text::unit_view const line = storage.line_units(caret.line);
  if (caret.column < typed || !view().mirror_observer.mirrors.empty()) return;
  if (!language_patterns().matches(indent_patterns::decrease, line.substr(0, caret.column))) return;
  text::unit_view const before = line.substr(0, caret.column - typed);
  if (!is_blank_line(before) &&
      text::indent_width(before, tab_size()) != wanted_indent(before, caret.line))
    return;
  std::size_t const behind_caret = line.size() - caret.column;
  indent_line(caret.line);
  view().selection.set_caret(
      {&view(), text::iterator(caret.line, storage.size(caret.line) - behind_caret, &storage)});
}

// The leading white space of a line. Where tabs are typed, what follows them is alignment and isn't
// taken over; they may stand behind the mark of a comment.
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
  std::u16string before = u"\n", behind;
  if (text_view_.smartTyping()) end_pairs_of_line(text_view_);
  if (text_view_.autoIndent()) {
    text::iterator const at = view().selection.first().base;
    text::unit_view const line = view().storage->line_units(at.line);
    before += taken_indent(at.line);
    bool const in_braces = !view().has_selection() && 0 < at.column && at.column < line.size() &&
                           line[at.column - 1] == u'{' && line[at.column] == u'}';
    if (in_braces) behind = before;
    if (language_patterns().matches(indent_patterns::increase, line.substr(0, at.column)))
      before += indent::blanks(tab_size(), tab_size(), indents_by_spaces(at.line));
  }
  view().insert(before.begin(), before.end());
  if (behind.empty()) return;
  text::iterator const caret = view().selection.current_mark.base;
  view().insert(behind.begin(), behind.end());
  view().selection.set_caret({&view(), caret});
}

bool line_indenter::paste() {
  auto const clip = current_clip();
  bool const is_one_line = clip && clip->text.find(u'\n') == clip->text.npos;
  if (!text_view_.indentedPaste() || !clip || clip->rectangular || is_one_line)
    return view_paste_without_reindent(&view());
  view().erase_selection();
  std::u16string const text = fitted(clip->text);
  view().insert(text.begin(), text.end());
  return true;
}

// Several lines, indented as fits the caret. Blanks that the user has put before it are where they
// belong; at a line's start the language tells, and behind text that line.
std::u16string line_indenter::fitted(std::u16string const& clip) {
  indent_patterns const& patterns = language_patterns();
  text::iterator const caret = make_base_iter(view().selection.current_mark);
  text::unit_view const line = view().storage->line_units(caret.line);
  text::unit_view const before = line.substr(0, caret.column);
  bool const behind_text = !is_blank_line(before);
  std::size_t const have =
      text::expanded_width(behind_text ? text::unit_view() : before, 0, tab_size());
  std::size_t const level = indent::level(clip, tab_size());

  std::size_t want = behind_text ? text::indent_width(line, tab_size()) : have;
  if (have == 0 && !behind_text) {
    text::unit_view const content = is_blank_line(line) ? telling_line(clip, patterns) : line;
    if (!patterns.know_indentation() || content.empty()) return clip;
    want = patterns.indentForContentAtLine(content, caret.line, *view().storage, tab_size());
  }
  if (level == std::numeric_limits<std::size_t>::max()) return clip;  // blank lines alone

  std::u16string result = clip;
  if (level > want) result = indent::cut_from_each_line(clip, level - want, tab_size());
  if (level < want) {
    std::u16string const prefix =
        indent::blanks(want - level, tab_size(), indents_by_spaces(caret.line));
    result = prefix + indent::prefix_each_line(clip, prefix);
  }
  result.resize(result.find_last_not_of(u" \t") + 1);
  std::size_t const doubled =
      behind_text ? leading_blanks(result) : indent::skip(result, have, tab_size());
  return result.substr(doubled);
}
