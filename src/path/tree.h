#pragma once

#include <string>
#include <vector>

/// Folders with all that is in them. Any thread.
namespace path {

/// Copies a folder, or a file, with all in it, for a place where nothing stands yet. Links stay
/// links, if they are relative and lead to something in the folder; others are left out with a
/// complaint. So are marks by which a program gets its owner's rights. With `skip_hidden` what
/// begins with a dot is left out, at every depth. False on failure, also for a file of more than
/// 256 MiB; `to` may then hold a part.
bool copy_tree(std::string const& from, std::string const& to, bool skip_hidden = false);
/// Removes a folder and all in it, as far as it can.
void remove_tree(std::string const& folder);

/// The names in a folder that aren't hidden, in the order of their bytes. Empty when it can't be
/// read.
std::vector<std::string> visible_names(std::string const& folder);

}  // namespace path
