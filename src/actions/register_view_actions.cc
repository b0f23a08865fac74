#include "actions/register_view_actions.h"

#include "actions/action_helpers.h"
#include "actions/clipboard.h"

namespace actions {
namespace {

auto inserting(text::char_t unit) {
  return [unit](text::view* view) { view_insert(view, unit); };
}

}  // namespace

void register_view_actions(action_map& actions, title_action_map& titles) {
  using text::view;
  actions.add_action(&view::can_undo, "canUndo");
  actions.add_action(&view::can_redo, "canRedo");
  actions.add_action(&view::enter_line_append_mode, "enterLineAppendMode:");
  actions.add_action(&view::can_enter_line_append_mode, "canEnterLineAppendMode");

  actions.add_action(inserting('\n'), "insertNewlineIgnoringFieldEditor:");
  actions.add_action(inserting('\n'), "insertParagraphSeparator:");
  actions.add_action(inserting('\t'), "insertTabIgnoringFieldEditor:");

  actions.add_action(sequence_helper(view_copy, &view::erase_selection), "cut:");
  actions.add_action(view_copy, "copy:");
  actions.add_action(view_paste_without_reindent, "pasteWithoutReindent:");
  actions.add_action(view_paste, "paste:");
  actions.add_action(view_paste_next, "pasteNext:");
  actions.add_action(view_paste_previous, "pastePrevious:");
  actions.add_action(&view::erase_selection, "delete:");
  actions.add_action(view_yank, "yank:");
  for (char const* name : {"canCut", "canCopy", "canDelete", "canToggleColumnSelection"})
    actions.add_action(&view::has_selection, name);

  actions.add_action(toogle_option_helper(&view::is_in_column_mode, &view::set_column_mode),
                     "toggleColumnSelection:");
  titles.add_action(option_title_helper(&view::is_in_column_mode, "Change to Stream Selection",
                                        "Change to Column Selection"),
                    "toggleColumnSelectionMenuTitle");
}

}  // namespace actions
