#pragma once

#include <string>
#include <vector>

namespace widgets {

/// Asks the desktop's file manager to show the files, selected, or else to open the folder of the
/// first one. Doesn't wait for it.
void show_in_file_manager(std::vector<std::string> const& paths);

}  // namespace widgets
