#pragma once

#include "platform/menu.h"
#include "plist/value.h"

#include <cstddef>
#include <optional>
#include <vector>

/// The commands that the user types to send text through: what the panel proposes, and the last
/// ones, kept as settings. A filter is a dictionary as executeCommandWithOptions: takes it. Main
/// thread only.
namespace WynExecuteCommandManager {

/// What was chosen last.
plist::value options();
/// The newest first.
std::vector<plist::value> history();
/// As the newest one, in place of another entry of the same command.
void addToHistory(plist::value const& filter);
/// One item for each entry, with its number as the argument.
std::vector<platform::menu_item> historyMenu();
/// Lets the user choose a filter, and keeps it; nothing when cancelled.
std::optional<plist::value> askForFilter();

}  // namespace WynExecuteCommandManager
