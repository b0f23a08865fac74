#include "actions/transforming.h"

#include <algorithm>
#include <string>
#include <vector>

#include "actions/align.h"
#include "actions/capitalize.h"
#include "actions/convert_spaces.h"
#include "actions/line_order.h"
#include "actions/movement.h"
#include "actions/reformat.h"
#include "actions/selecting.h"
#include "actions/shift_lines.h"
#include "platform/unicode.h"
#include "platform/utf.h"
#include "regex/traits.h"
#include "settings/store.h"
#include "text/cluster.h"
#include "text/convert_tabs.h"
#include "text/views/box.h"

namespace actions {
namespace {

using unit_traits = regex::traits<text::char_t>;

void replace_selection(text::view* view, text::unit_view units) {
  view->replace_selection(units.begin(), units.end());
}

std::u16string selected_text(text::view const* view) {
  return std::u16string(view->selection.units());
}

void reformat(text::view* view, bool justify) {
  reformat_options options;
  options.width = view->selection.width();
  options.tab_size = view->tab_size;
  options.justify = justify;
  std::u16string text = selected_text(view);
  if (view->selection.column_mode) {
    options.keep_prefix = false;
    text.erase(0, std::min(text.find_first_not_of(u" \t"), text.size()));
  }
  replace_selection(view, reformatted(text, options));
}

using line_shift = std::u16string (*)(text::unit_view, std::size_t, bool);

void shift(text::view* view, line_shift shifted) {
  text::selection& selection = view->selection;
  if (selection.column_mode)
    return replace_selection(
        view, shifted(selected_text(view), view->tab_size, view->treats_spaces_as_tabs));

  // The end that the user extends stays the caret; without a selection of the user's, the caret
  // keeps its place in the text.
  bool const is_extended = selection.current_mark == selection.last_mark;
  select_hard_line(view);
  if (is_extended) selection.current_mark = selection.last();
  text::storage& storage = *view->storage;
  auto const caret = selection.current_mark;
  std::size_t const from_end = storage.size(caret.base.line) - caret.base.column;
  bool const at_end = caret == selection.last();
  replace_selection(view,
                    shifted(selected_text(view), view->tab_size, view->treats_spaces_as_tabs));
  if (at_end) return;
  std::size_t const size = storage.size(caret.base.line);
  selection.current_mark = {
      view, text::iterator(caret.base.line, size - std::min(size, from_end), &storage)};
}

void align(text::view* view, alignment how) {
  replace_selection(view,
                    aligned(selected_text(view), how, view->selection.width(), view->tab_size));
}

/// Where the lines of the selected text begin.
std::size_t first_column(text::view* view) {
  return view->selection.column_mode ? text::box(view).first_column : 0;
}

std::u16string reversed_characters(text::unit_view text) {
  std::u16string result;
  result.reserve(text.size());
  while (!text.empty()) {
    std::size_t const start = text::previous_cluster(text, text.size());
    result += text.substr(start);
    text.remove_suffix(text.size() - start);
  }
  return result;
}

/// Selects what the caret stands between: two characters, or two lines next to a line end. False,
/// and the caret stays, when there is nothing on one side.
bool select_for_transposing(text::view* view) {
  text::selection& selection = view->selection;
  auto const caret = selection.current_mark;
  text::storage& storage = *view->storage;
  if (caret.base == storage.begin_of_line(0) || caret.base == storage.end(-1)) return false;
  if (caret.base.column == 0) {
    selection.select({view, caret.base - 1}, {view, caret.base + 1}, false);
  } else if (*caret.base == u'\n') {
    if (caret.base + 1 == storage.end(-1)) return false;
    selection.select({view, caret.base - 1}, {view, caret.base + 2}, false);
  } else {
    text::unit_view const line = storage.line_units(caret.base.line);
    auto const at = [&](std::size_t column) {
      return text::view_iterator(view, text::iterator(caret.base.line, column, &storage));
    };
    selection.select(at(text::previous_cluster(line, caret.base.column)),
                     at(text::next_cluster(line, caret.base.column)), false);
    return true;
  }
  select_hard_line(view);
  return true;
}

}  // namespace

void view_unwrap_text(text::view* view) {
  replace_selection(view, unwrapped(selected_text(view)));
}

void view_reformat_text(text::view* view) {
  reformat(view, false);
}

void view_reformat_text_and_justify(text::view* view) {
  reformat(view, true);
}

void view_shift_left(text::view* view) {
  shift(view, shifted_left);
}

void view_shift_right(text::view* view) {
  shift(view, shifted_right);
}

void view_align_left(text::view* view) {
  align(view, alignment::left);
}

void view_align_center(text::view* view) {
  align(view, alignment::center);
}

void view_align_right(text::view* view) {
  align(view, alignment::right);
}

void view_align_justified(text::view* view) {
  align(view, alignment::justified);
}

void view_change_tabs_to_spaces(text::view* view) {
  std::u16string const text = selected_text(view);
  auto const result =
      text::convert_tabs_to_spaces(text, first_column(view), text::tab_stops(view->tab_size));
  replace_selection(view, {result.data(), result.size()});
}

void view_change_spaces_to_tabs(text::view* view) {
  replace_selection(view, spaces_to_tabs(selected_text(view), view->tab_size, first_column(view)));
}

text::char_t toggle_case(text::char_t unit) {
  if (unit_traits::is_upper(unit)) return unit_traits::to_lower(unit);
  return unit_traits::is_lower(unit) ? unit_traits::to_upper(unit) : unit;
}

void view_capitalize_word(text::view* view) {
  std::vector<std::u16string> excluded;
  auto& defaults = settings::store();
  for (auto const& word : defaults.array("WynWordsExcludedFromCapitalization"))
    excluded.push_back(unicode::to_utf16(unicode::lowercase(word.string_or(""))));
  replace_selection(view, capitalized(selected_text(view), [&](std::u16string const& word) {
                      return std::find(excluded.begin(), excluded.end(), word) != excluded.end();
                    }));
}

bool view_transpose(text::view* view) {
  bool const had_selection = view->has_selection();
  if (!had_selection && !select_for_transposing(view)) return false;
  text::selection& selection = view->selection;
  if (!had_selection) selection.current_mark = selection.last();

  std::u16string text = selected_text(view);
  bool const has_end = text.size() > 2 && text.back() == u'\n';
  if (has_end) text.pop_back();
  text = text.find(u'\n') == text.npos ? reversed_characters(text) : reversed_lines(text);
  if (has_end) text += u'\n';
  replace_selection(view, text);
  if (!had_selection) selection.set_caret(text::view_iterator(selection.last()));
  return true;
}

void select_char(text::view* view) {
  view->selection.select_to(right(view->selection.current_mark), false);
}

void select_word_right(text::view* view) {
  view->selection.select_to(word_right(view->selection.current_mark), false);
}

}  // namespace actions
