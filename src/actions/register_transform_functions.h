#pragma once

#include "actions/action_map.h"

namespace actions {

/// Enters what rewrites the selected text or lines.
void register_transform_functions(action_map& map, title_action_map& titles);

}  // namespace actions
