#pragma once

#include <string>

#include "platform/tree/tree_panel.h"

namespace projects {

/// By the extension alone: no file is looked at.
platform::tree_icon icon_of(std::string const& name);

}  // namespace projects
