#pragma once

#include <string>
#include <string_view>

#include "actions/action_map.h"

/// A text, a view of it with tabs of four columns, and the actions by name.
struct action_fixture {
  /// `modes` are letters of "f" freehanded mode, "s" spaces for tabs, "o" overwrite mode, "w" lines
  /// wrapped after four units with the next unit on no row, "n" a screen of twelve columns.
  explicit action_fixture(std::string_view modes = "");

  /// Performs actions on the drawn text (see text/marked_text.h), whose names are separated by
  /// blanks and may lack their colon. Gives the drawing of the outcome, with a `!` before it for
  /// each action that reported failure.
  std::string run(std::string_view before, std::string_view actions);

  text::storage storage;
  text::view view{storage};
  actions::action_map actions;
  actions::title_action_map titles;
};
