#pragma once

#include "actions/action_map.h"

namespace actions {

/// Enters moving, selecting and deleting by all movement functions ("moveWordLeft:",
/// "moveWordLeftAndModifySelection:", "deleteWordLeft:"), and selecting things ("selectWord:").
void register_movement_functions(action_map& map);

}  // namespace actions
