#include "actions/clipboard.h"
#include "actions/indent.h"
#include "text/tab_width.h"
#include "text/view.h"
#include "textview/WynTextView.h"
#include "textview/indent_patterns.h"

#include <algorithm>
#include <limits>

// How far lines are indented: new ones, those that what is typed makes the end of a block, those
// that are pasted, and those that the user asks for.

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

void WynTextView::addIndentationMethods() {
  // In front of the plain one, which doesn't know the language.
  actions_.add_action([this](text::view*) { return pasteClip(); }, "paste:");
  addAction("indent:", [this] { indentSelectedLines(); });
}

indent_patterns const& WynTextView::indentPatterns() {
  plist::value const settings = stylesForCaretWait(false);
  if (indentPatterns_ == nullptr || !indentPatterns_->are_of(settings))
    indentPatterns_ = std::make_unique<indent_patterns>(settings);
  return *indentPatterns_;
}

std::size_t WynTextView::currentIndentForContentAtLine(text::unit_view content,
                                                       std::size_t number) {
  return indentPatterns().indentForContentAtLine(content, number, *view_->storage, tabSize());
}

// Text that is indented by spaces goes on so, also where tabs are what is typed.
bool WynTextView::indentsBySpaces(std::size_t number) const {
  return treatsSpacesAsTabs() || is_indented_by_spaces(*view_->storage, number);
}

// A line of blanks alone loses them.
void WynTextView::indentLine(std::size_t number) {
  text::storage& storage = *view_->storage;
  text::unit_view const line = storage.line_units(number);
  std::size_t const old = leading_blanks(line);
  std::u16string fresh;
  if (old < line.size())
    fresh = indent::blanks(currentIndentForContentAtLine(line, number), tabSize(),
                           indentsBySpaces(number));
  if (line.substr(0, old) == fresh) return;
  text::iterator const at = storage.begin_of_line(number);
  storage.erase(at, at + static_cast<std::ptrdiff_t>(old));
  storage.insert(at, fresh.begin(), fresh.end());
}

// The caret stays before the unit at which it is; several lines stay selected as a whole.
void WynTextView::indentSelectedLines() {
  text::storage& storage = *view_->storage;
  auto const [first, last] = selectedLines();
  text::iterator const caret = view_->selection.current_mark.base;
  std::size_t const behind_caret = storage.size(caret.line) - caret.column;
  bool const had_selection = view_->has_selection();
  for (std::size_t line = first; line <= last; ++line) indentLine(line);
  if (!had_selection) {
    std::size_t const size = storage.size(caret.line);
    text::iterator const at(caret.line, size - std::min(size, behind_caret), &storage);
    return view_->selection.set_caret({view_, at});
  }
  bool const has_next = last + 1 < storage.lines();
  view_->selection.set_caret(view_->in_view(storage.begin_of_line(first)));
  view_->selection.select_to(
      view_->in_view(has_next ? storage.begin_of_line(last + 1) : storage.end(last)), false);
}

// Whether what is typed next, at the line's end, may make it one that closes a block.
bool WynTextView::mayCloseBlock() {
  if (!autoIndent_ || view_->has_selection() || !view_->mirror_observer.mirrors.empty())
    return false;
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = view_->storage->line_units(caret.line);
  indent_patterns const& patterns = indentPatterns();
  return caret.column == line.size() && patterns.know_indentation() &&
         !patterns.matches(indent_patterns::decrease, line);
}

// After a unit has been typed. A line that had text before, and that the user has indented in
// another way than the language would, is left as it is.
void WynTextView::indentClosingLine() {
  text::storage& storage = *view_->storage;
  text::iterator const caret = view_->selection.current_mark.base;
  text::unit_view const line = storage.line_units(caret.line);
  if (caret.column == 0 || !view_->mirror_observer.mirrors.empty()) return;
  if (!indentPatterns().matches(indent_patterns::decrease, line)) return;
  text::unit_view const before = line.substr(0, caret.column - 1);
  if (!is_blank_line(before) &&
      text::indent_width(before, tabSize()) != currentIndentForContentAtLine(before, caret.line))
    return;
  std::size_t const behind_caret = line.size() - caret.column;
  indentLine(caret.line);
  view_->selection.set_caret(
      {view_, text::iterator(caret.line, storage.size(caret.line) - behind_caret, &storage)});
}

// The leading white space of a line. Where tabs are typed, what follows them is alignment and isn't
// taken over; they may stand behind the mark of a comment.
std::u16string WynTextView::indentOfLine(std::size_t number) const {
  text::unit_view line = view_->storage->line_units(number);
  bool const tabs_only = !treatsSpacesAsTabs() && !begins_with_space(line);
  if (tabs_only) {
    bool const comment = line.starts_with(u"//\t") || line.starts_with(u"/*\t");
    if (comment || line.starts_with(u"*/")) line.remove_prefix(2);
  }
  auto const text = line.find_first_not_of(tabs_only ? u"\t" : u" \t");
  return std::u16string(line.substr(0, std::min(text, line.size())));
}

void WynTextView::insertNewline() {
  std::u16string before = u"\n", behind;
  if (autoIndent_) {
    text::iterator const at = view_->selection.first().base;
    text::unit_view const line = view_->storage->line_units(at.line);
    before += indentOfLine(at.line);
    bool const in_braces = !view_->has_selection() && 0 < at.column && at.column < line.size() &&
                           line[at.column - 1] == u'{' && line[at.column] == u'}';
    if (in_braces) behind = before;
    if (indentPatterns().matches(indent_patterns::increase, line.substr(0, at.column)))
      before += indent::blanks(tabSize(), tabSize(), indentsBySpaces(at.line));
  }
  view_->insert(before.begin(), before.end());
  if (behind.empty()) return;
  text::iterator const caret = view_->selection.current_mark.base;
  view_->insert(behind.begin(), behind.end());
  view_->selection.set_caret({view_, caret});
}

bool WynTextView::pasteClip() {
  auto const clip = current_clip();
  bool const is_one_line = clip && clip->text.find(u'\n') == clip->text.npos;
  if (!indentedPaste_ || !clip || clip->rectangular || is_one_line)
    return view_paste_without_reindent(view_);
  view_->erase_selection();
  std::u16string const text = fittedClip(clip->text);
  view_->insert(text.begin(), text.end());
  return true;
}

// Several lines, indented as fits the caret. Blanks that the user has put before it are where they
// belong; at a line's start the language tells, and behind text that line.
std::u16string WynTextView::fittedClip(std::u16string const& clip) {
  indent_patterns const& patterns = indentPatterns();
  text::iterator const caret = make_base_iter(view_->selection.current_mark);
  text::unit_view const line = view_->storage->line_units(caret.line);
  text::unit_view const before = line.substr(0, caret.column);
  bool const behind_text = !is_blank_line(before);
  std::size_t const have =
      text::expanded_width(behind_text ? text::unit_view() : before, 0, tabSize());
  std::size_t const level = indent::level(clip, tabSize());

  std::size_t want = behind_text ? text::indent_width(line, tabSize()) : have;
  if (have == 0 && !behind_text) {
    text::unit_view const content = is_blank_line(line) ? telling_line(clip, patterns) : line;
    if (!patterns.know_indentation() || content.empty()) return clip;
    want = patterns.indentForContentAtLine(content, caret.line, *view_->storage, tabSize());
  }
  if (level == std::numeric_limits<std::size_t>::max()) return clip;  // blank lines alone

  std::u16string result = clip;
  if (level > want) result = indent::cut_from_each_line(clip, level - want, tabSize());
  if (level < want) {
    std::u16string const prefix =
        indent::blanks(want - level, tabSize(), indentsBySpaces(caret.line));
    result = prefix + indent::prefix_each_line(clip, prefix);
  }
  result.resize(result.find_last_not_of(u" \t") + 1);
  std::size_t const doubled =
      behind_text ? leading_blanks(result) : indent::skip(result, have, tabSize());
  return result.substr(doubled);
}
