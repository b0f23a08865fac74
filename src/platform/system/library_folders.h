#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// Where the program's files live, by the XDG base directory rules: a variable that is empty or
/// holds a relative path counts as not set. No folder is made unless stated. Results are absolute
/// paths without a slash at the end. Any thread.
namespace platform {

using environment = std::map<std::string, std::string, std::less<>>;

/// A copy of this process's environment.
environment current_environment();

/// $HOME, else the home folder of the user database, else "/".
std::string home_folder(environment const& env = current_environment());

/// The user's library: $XDG_DATA_HOME/Quirnote.
std::string user_data_folder(environment const& env = current_environment());
/// $XDG_CONFIG_HOME/Quirnote
std::string config_folder(environment const& env = current_environment());
/// $XDG_CACHE_HOME/Quirnote
std::string cache_folder(environment const& env = current_environment());
/// $XDG_STATE_HOME/Quirnote: session, safety copies, journals, recent files.
std::string state_folder(environment const& env = current_environment());

/// The library in the order in which it is searched: the user's, the machine's
/// (/usr/local/share/Quirnote), then each of $XDG_DATA_DIRS with /Quirnote; none twice.
std::vector<std::string> library_domains(environment const& env = current_environment());

/// The folder of the pid file and the socket, made if need be: $XDG_RUNTIME_DIR/Quirnote, or
/// "run" in the cache folder where that can't be used. It belongs to this user and has mode 0700.
/// Nothing when neither can be had.
std::optional<std::string> runtime_folder(environment const& env = current_environment());

/// What is installed beside the program, which is given by its absolute path: share/Quirnote
/// beside its bin/, or the source tree's share/ for a program in build/NAME/bin.
std::string shared_support_folder(std::string const& program);
/// The same for the running program.
std::string shared_support_folder();

/// lib/quirnote beside the bin/ of the running program: what it loads and what it runs.
std::string module_folder();

/// Makes the folder and those above it that are missing, with `mode` (less the umask). Those that
/// root makes belong to whom the nearest existing folder belongs. False with errno on failure.
bool make_folders(std::string const& path, unsigned mode = 0700);

}  // namespace platform
