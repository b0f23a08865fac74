#include "actions/register_transform_functions.h"

#include "actions/action_helpers.h"
#include "actions/line_actions.h"
#include "actions/selecting.h"
#include "actions/transforming.h"
#include "regex/traits.h"
#include "text/cluster.h"

#include <functional>
#include <utility>

namespace actions {
namespace {

struct transformation {
  char const* name;
  void (*function)(text::view*);
  void (*select)(text::view*);  // what it works on when nothing is selected
};

constexpr transformation transformations[] = {
    {"reformatText:", view_reformat_text, select_paragraph},
    {"reformatTextAndJustify:", view_reformat_text_and_justify, select_paragraph},
    {"unwrapText:", view_unwrap_text, select_paragraph},
    {"shiftLeft:", view_shift_left, select_hard_line},
    {"shiftRight:", view_shift_right, select_hard_line},
    {"alignLeft:", view_align_left, select_hard_line},
    {"alignCenter:", view_align_center, select_hard_line},
    {"alignRight:", view_align_right, select_hard_line},
    {"alignJustified:", view_align_justified, select_hard_line},
    {"capitalizeWord:", view_capitalize_word, select_hard_line},
};

struct case_change {
  char const* name;
  text::char_t (*function)(text::char_t);
  void (*select)(text::view*);
};

constexpr case_change case_changes[] = {
    {"uppercaseWord:", regex::traits<text::char_t>::to_upper, select_word},
    {"lowercaseWord:", regex::traits<text::char_t>::to_lower, select_word},
    {"changeCaseOfLetter:", toggle_case, select_char},
    {"changeCaseOfWord:", toggle_case, select_word_right},
};

/// Text that is put together again may join characters where a mark stands.
void put_marks_at_characters(text::view& view) {
  text::selection& selection = view.selection;
  for (auto* mark : {&selection.first_mark, &selection.last_mark, &selection.current_mark})
    mark->base.column = static_cast<uint32_t>(
        text::cluster_start_from(view.storage->line_units(mark->base.line), mark->base.column));
  selection.data.clear();
}

/// A function that works on whole texts: overwriting is for typing, and must not leave blanks of a
/// text's old length; nor is what it erases to be erased on other lines that typing reaches.
template <typename F>
auto rewriting(F function) {
  return [function](text::view* view) {
    struct scope {
      text::view& view;
      bool const overwrites = std::exchange(view.overwrite_mode, false);
      ~scope() {
        view.overwrite_mode = overwrites;
        put_marks_at_characters(view);
      }
    } const during{*view};
    view->mirror_observer.remove_all_mirrors();
    return std::invoke(function, view);
  };
}

}  // namespace

void register_transform_functions(action_map& map, title_action_map& titles) {
  auto const add = [&](auto function, char const* name) {
    map.add_action(rewriting(function), name);
  };
  for (auto const& row : transformations)
    add(cond_select_line_helper(row.function, row.select), row.name);
  add(in_place_helper(view_change_tabs_to_spaces, select_all), "changeTabsToSpaces:");
  add(in_place_helper(view_change_spaces_to_tabs, select_all), "changeSpacesToTabs:");
  for (auto const& row : case_changes)
    add(cond_select_line_helper(bind_view_transform_helper(row.function), row.select), row.name);

  add(cond_select_line_helper(view_move_selection_line_up, select_hard_line),
      "moveSelectionLineUp:");
  add(cond_select_line_helper(view_move_selection_line_down, select_hard_line),
      "moveSelectionLineDown:");
  add(view_move_selection_column_left, "moveSelectionColumnLeft:");
  add(view_move_selection_column_right, "moveSelectionColumnRight:");
  for (char const* name : {"canMoveSelectionColumnLeft", "canMoveSelectionColumnRight"})
    map.add_action(&text::view::has_selection, name);
  add(view_transpose, "transpose:");

  add(view_move_lines_up, "moveLinesUp:");
  add(view_move_lines_down, "moveLinesDown:");
  add(view_duplicate, "duplicate:");
  add(view_delete_lines, "deleteLines:");
  add(view_join_lines, "joinLines:");
  add(view_sort_lines, "sortLines:");
  add(view_unique_lines, "uniqueLines:");
  add(view_reverse_lines, "reverseLines:");

  titles.add_action(
      option_title_helper(&text::view::has_selection, "Reformat Selection", "Reformat Paragraph"),
      "reformatTextMenuTitle");
  titles.add_action(
      option_title_helper(&text::view::has_selection, "Unwrap Selection", "Unwrap Paragraph"),
      "unwrapTextMenuTitle");
}

}  // namespace actions
