#pragma once

#include "actions/action_map.h"

namespace actions {

/// Enters the actions and menu titles that a text view has beside the movements: the clipboard,
/// plain insertions, the column mode, and the queries by which menu items are enabled.
void register_view_actions(action_map& actions, title_action_map& titles);

}  // namespace actions
