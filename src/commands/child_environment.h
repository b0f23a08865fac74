#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace commands {

using variables = std::map<std::string, std::string>;

/// Bytes of one string that the kernel hands to a program; a variable has a name, a "=" and an end.
inline constexpr std::size_t longest_string = 0x20000;

/// What a command gets as its environment, "NAME=VALUE" each, sorted: QN_PID, SHLVL, what is
/// given, and of the program's own environment what has another name and doesn't begin with QN_,
/// without the options and the functions that a shell has exported to it.
/// Given variables that can't be handed on are left out, which is logged. Of the PATH there is what
/// safe_path() leaves.
std::vector<std::string> child_environment(variables const& given);

/// The PATH without relative and empty entries, by which a program of the folder that a command
/// runs in would be found; that of the system if nothing is left.
std::string safe_path(std::string_view path);
/// The PATH that a command with these variables gets.
std::string child_path(variables const& given);

}  // namespace commands
