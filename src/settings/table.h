#pragma once

#include <string_view>
#include <vector>

#include "settings/setting.h"

/// All settings of the program, each in one row of table.cc. What reads or changes a setting, lists
/// settings or describes them does it by this table.
///
/// A new switch of the text view with an entry in the menus needs a row here, an accessor in
/// textview/view_switches.h and the entry in share/menus.plist. Other settings need their row, and
/// are read by `settings::store()`. docs/settings.md is what `quirnote --list-settings` prints.
namespace settings {

/// In the order of the pages. Lives as long as the process.
std::vector<setting> const& all();
/// Null for keys that no row has.
setting const* find(std::string_view key);

}  // namespace settings
