#pragma once

#include <string>
#include <vector>

namespace app {

/// A link to the command-line tool in a folder of the user's PATH. Main thread only.

/// The folders on a PATH in what the script for that prints: what login files print before comes
/// before a certain line.
std::vector<std::string> folders_in(std::string const& output);

/// Makes the link, in the place of one that leads to a tool of that name or nowhere. Empty when it
/// is there; else why not, for the user.
std::string make_link(std::string const& tool, std::string const& link);

/// Lets the user choose a folder, and says what came of it.
void offer_link_to_tool();

/// Leads the link that was made earlier to this program's tool, if the one it led to is gone.
void update_link_to_tool();

}  // namespace app
