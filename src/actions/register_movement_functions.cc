#include "actions/register_movement_functions.h"

#include "actions/movement.h"
#include "actions/movement_wrappers.h"
#include "actions/selecting.h"

namespace actions {
namespace {

struct movement_row {
  char const* name;
  movement_function function;
  bool forward;
};

constexpr movement_row functions[] = {
    {"Up", up, false},
    {"Down", down, true},
    {"Left", left, false},
    {"Right", right, true},
    {"Backward", left, false},
    {"Forward", right, true},
    {"WordLeft", word_left, false},
    {"WordRight", word_right, true},
    {"WordBackward", word_left, false},
    {"WordForward", word_right, true},
    {"SubWordLeft", sub_word_left, false},
    {"SubWordRight", sub_word_right, true},
    {"SubWordBackward", sub_word_left, false},
    {"SubWordForward", sub_word_right, true},
    {"ToBeginningOfLine", to_beginning_of_line, false},
    {"ToTextOrBeginningOfLine", to_text_or_beginning_of_line, false},
    {"ToEndOfLine", to_end_of_line, true},
    {"ToBeginningOfColumn", to_beginning_of_column, false},
    {"ToEndOfColumn", to_end_of_column, true},
    {"ToBeginningOfParagraph", to_beginning_of_hard_paragraph, false},
    {"ToEndOfParagraph", to_end_of_hard_paragraph, true},
    {"ToBeginningOfDocument", to_beginning_of_document, false},
    {"ToEndOfDocument", to_end_of_document, true},
};

using wrapper = bool (*)(text::view*, movement_function);

/// A wrapper bound to a movement. A step that leads nowhere has failed; whoever goes to a place may
/// well be there already.
void add_movement(action_map& map, wrapper wrap, movement_row const& row, std::string name) {
  auto const move = [wrap, f = row.function](text::view* view) { return wrap(view, f); };
  if (std::string_view(row.name).starts_with("To"))
    map.add_action([move](text::view* view) { move(view); }, std::move(name));
  else
    map.add_action(move, std::move(name));
}

/// Deleting these is an action of the text view, which does more than that, or of no use.
bool has_no_delete_action(std::string_view name) {
  return name == "Backward" || name == "Forward" || name == "ToEndOfParagraph" ||
         name == "ToTextOrBeginningOfLine";
}

}  // namespace

void register_movement_functions(action_map& map) {
  // These differ from the wrappers of the same name, so they come first.
  map.add_action(move_left, "moveBackward:");
  map.add_action(move_right, "moveForward:");
  map.add_action(move_up, "moveUp:");
  map.add_action(move_down, "moveDown:");
  for (auto const& row : functions) {
    std::string const name = row.name;
    add_movement(map, row.forward ? move_forward_action : move_backward_action, row,
                 "move" + name + ":");
    add_movement(map, row.forward ? select_forward_action : select_backward_action, row,
                 "move" + name + "AndModifySelection:");
    if (!has_no_delete_action(name)) add_movement(map, delete_action, row, "delete" + name + ":");
  }
  map.add_action(select_word, "selectWord:");
  map.add_action(select_line, "selectLine:");
  map.add_action(select_hard_line, "selectHardLine:");
  map.add_action(select_soft_paragraph, "selectParagraph:");
  map.add_action(select_all, "selectAll:");
}

}  // namespace actions
