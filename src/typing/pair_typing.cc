#include "typing/pair_typing.h"

#include "actions/word_units.h"
#include "grammar/tokenize_filter.h"
#include "regex/oniguruma.h"
#include "styles/indent_patterns.h"
#include "text/views/view.h"
#include "typing/typed_view.h"

#include <algorithm>
#include <chrono>
#include <string>

namespace typing {
namespace {

using live_pair = text::iterator_observer::notification_list::iterator;

bool is_blank_or_end(text::char_t unit) {
  return unit == u' ' || unit == u'\t' || unit == u'\n';
}

bool is_quote(styles::unit_pair pair) {
  constexpr text::unit_view directed = u"\u00ab\u00bb\u2018\u2019\u201c\u201d\u2039\u203a";
  return pair.open == pair.close || directed.find(pair.open) != directed.npos;
}

// The units of a live pair; the same twice where its edges have been changed.
styles::unit_pair units_of(text::view const& view, live_pair pair) {
  text::pos const first = pair->first(), last = pair->last();
  text::storage const& text = *view.storage;
  if (first.column == 0 || last.column >= text.size(last.line)) return {u'\n', u'\n'};
  return {text.line_units(first.line)[first.column - 1], text.line_units(last.line)[last.column]};
}

std::optional<live_pair> live_closing_at(text::view& view, text::pos at) {
  auto& live = view.notify_observer.notifications;
  auto const found =
      std::find_if(live.begin(), live.end(), [&](auto const& p) { return p.last() == at; });
  return found == live.end() ? std::nullopt : std::optional(found);
}

// The innermost live pair round the caret that the unit closes; what stands before its closing unit
// must be for nothing but to be typed over.
std::optional<live_pair> closed_pair(text::view& view, text::char_t typed) {
  text::iterator at = view.selection.current_mark.base;
  text::iterator const end = view.end().base;
  bool passed_blanks = false, passed_brackets = false;
  for (; at != end; ++at) {
    if (is_blank_or_end(*at)) {
      passed_blanks = true;
      continue;
    }
    auto const pair = live_closing_at(view, at.pos());
    if (!pair) return std::nullopt;
    styles::unit_pair const units = units_of(view, *pair);
    bool const quotes = units.open == units.close;
    if (units.close == typed && !(quotes && passed_blanks) && !(passed_brackets && !quotes))
      return pair;
    if (quotes) return std::nullopt;
    passed_brackets = true;
  }
  return std::nullopt;
}

// An odd number of backslashes before it makes a unit stand for itself.
bool is_escaped(text::unit_view before) {
  std::size_t const other = before.find_last_not_of(u'\\');
  return (before.size() - (other == before.npos ? 0 : other + 1)) % 2 != 0;
}

bool ends_with_string_prefix(text::unit_view before, text::char_t quote,
                             plist::value const& settings) {
  constexpr std::size_t longest_prefix = 100;
  constexpr char const* key = "quotePrefixPattern";
  auto const pattern = styles::pattern_of_setting(settings[key].string_or(""), key);
  if (!pattern) return false;
  std::u16string line(before.substr(before.size() - std::min(before.size(), longest_prefix)));
  line += quote;
  return bool(oniguruma::find(line.data(), 0, static_cast<std::ptrdiff_t>(line.size()), &*pattern));
}

// A quote right after its like opens the text of a longer mark, and one that makes their number on
// the line even, apostrophes in words left out, is a closing one.
bool opens_quote(text::unit_view line, std::size_t column, text::char_t quote,
                 plist::value const& settings) {
  text::unit_view const before = line.substr(0, column);
  if (!before.empty() && before.back() == quote) return false;
  if (!before.empty() && actions::is_word_char(before.back()) &&
      !ends_with_string_prefix(before, quote, settings))
    return false;
  std::size_t quotes = 0;
  for (std::size_t at = line.find(quote); at != line.npos; at = line.find(quote, at + 1)) {
    bool const in_word = at > 0 && actions::is_word_char(line[at - 1]) && at + 1 < line.size() &&
                         actions::is_word_char(line[at + 1]);
    quotes += in_word ? 0 : 1;
  }
  return quotes % 2 == 0;
}

// What a block is put round, and no end of what the caret is in.
bool begins_with_text(text::unit_view rest) {
  std::size_t const at = rest.find_first_not_of(u" \t");
  return at != rest.npos && text::unit_view(u")]},;:").find(rest[at]) == rest.npos;
}

}  // namespace

bool select_live_closing(typed_view& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  if (view.has_selection()) return false;
  auto const pair = closed_pair(view, typed);
  if (!pair) return false;
  // In the same line blanks are those that the user has gone back over.
  text::iterator caret = view.selection.current_mark.base;
  text::iterator closing((*pair)->last().line, (*pair)->last().column, view.storage);
  std::u16string const passed(caret, closing);
  view.notify_observer.remove_notify(*pair);
  if (passed.find_first_not_of(u" \t") == passed.npos) {
    caret = closing;
  } else {
    view.storage->erase(caret, closing);
  }
  view.selection.set_caret({&view, caret});
  view.selection.select_to({&view, caret + 1}, false);
  return true;
}

bool surround_selection(typed_view& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  text::selection const& selection = view.selection;
  if (!view.has_selection() || !text_view.mayOpenPair(typed)) return false;
  if (selection.column_mode && selection.width() == 0) return false;
  for (styles::unit_pair const pair :
       styles::pairs_of_settings(text_view.stylesForCaretWait(false), "smartTypingPairs")) {
    if (pair.open != typed) continue;
    std::u16string text(1, pair.open);
    text::unit_view const units = selection.units();
    for (std::size_t at = 0; at < units.size(); ++at) {
      bool const ends_row = selection.column_mode && units[at] == u'\n';
      if (ends_row) text += pair.close;
      text += units[at];
      if (ends_row && at + 1 < units.size()) text += pair.open;
    }
    if (!selection.column_mode) text += pair.close;
    view.replace_selection(text.begin(), text.end());
    return true;
  }
  return false;
}

std::optional<styles::unit_pair> opened_pair(typed_view& text_view, text::char_t typed) {
  text::view& view = *text_view.view();
  if (view.has_selection() || !view.mirror_observer.mirrors.empty()) return std::nullopt;
  if (!text_view.mayOpenPair(typed)) return std::nullopt;
  text::iterator const caret = view.selection.current_mark.base;
  text::unit_view const line = view.storage->line_units(caret.line);
  if (is_escaped(line.substr(0, caret.column))) return std::nullopt;
  plist::value const settings = text_view.stylesForTypingAt(caret);
  for (styles::unit_pair const pair : styles::pairs_of_settings(settings, "smartTypingPairs")) {
    if (pair.open != typed) continue;
    if (is_quote(pair) && !opens_quote(line, caret.column, typed, settings)) return std::nullopt;
    return pair;
  }
  return std::nullopt;
}

void complete_pair(typed_view& text_view, styles::unit_pair pair) {
  text::view& view = *text_view.view();
  text::iterator const caret = view.selection.current_mark.base;
  text::unit_view const line = view.storage->line_units(caret.line);
  text::unit_view const rest = line.substr(caret.column);
  if (!rest.empty() && actions::is_word_char(rest.front())) return;
  if (pair.open == u'{' && begins_with_text(rest)) return;
  view.storage->insert(caret, &pair.close, &pair.close + 1);
  view.selection.set_caret({&view, caret});
  view.notify_observer.add_notify({caret, caret});
}

void end_empty_pair(typed_view& text_view, bool both) {
  text::view& view = *text_view.view();
  if (view.has_selection()) return;
  text::iterator const caret = view.selection.current_mark.base;
  auto& live = view.notify_observer.notifications;
  auto const found = std::find_if(live.begin(), live.end(), [&](auto const& range) {
    return range.empty() && range.first() == caret.pos();
  });
  if (found == live.end()) return;
  view.notify_observer.remove_notify(found);
  if (!both || caret.column == 0 || caret == view.storage->end(caret.line)) return;
  view.selection.select({&view, caret - 1}, {&view, caret + 1}, false);
}

void end_pairs_of_line(typed_view& text_view) {
  text::view& view = *text_view.view();
  if (view.has_selection()) return;
  while (true) {
    text::iterator const caret = view.selection.current_mark.base;
    auto const pair = live_closing_at(view, caret.pos());
    if (!pair || units_of(view, *pair).close == u'\n') return;
    if (!text_view.isSeen() && text_view.tokenizer() != nullptr)
      text_view.tokenizer()->wait_for(caret.line, std::chrono::hours(1));
    text::iterator const opening((*pair)->first().line, (*pair)->first().column - 1, view.storage);
    if (text_view.stylesForTypingAt(opening)["smartTypingPairsEndWithLine"].integer_or(0) == 0)
      return;
    view.notify_observer.remove_notify(*pair);
    view.storage->erase(caret, caret + 1);
    view.selection.set_caret({&view, caret});
  }
}

bool is_at_end_of_typed(typed_view& text_view) {
  text::view& view = *text_view.view();
  text::iterator at = view.selection.current_mark.base;
  std::size_t const size = view.storage->size(at.line);
  for (; at.column < size; ++at)
    if (!live_closing_at(view, at.pos())) return false;
  return true;
}

}  // namespace typing
