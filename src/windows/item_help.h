#pragma once

#include "bundles/BundleItem.h"

#include <string>

namespace windows {

/// What an item is for, by its own account: its help text, the programs that it needs, whether it
/// saves, and where it writes beside its output. Empty for one that says nothing. Reads the item's
/// file.
std::string help_of(BundleItem& item);

}  // namespace windows
