#include "commands/child_environment.h"

#include "platform/desktop.h"
#include "platform/log.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace commands {
namespace {

bool is_text(std::string const& name, std::string const& value) {
  return !name.empty() && name.find('=') == name.npos && name.find('\0') == name.npos &&
         value.find('\0') == value.npos;
}

// By these a shell that the program was started from would set the options of the command's own, or
// put its functions in the place of programs.
bool is_state_of_shell(std::string_view name) {
  return name == "SHELLOPTS" || name == "BASHOPTS" || name.starts_with("BASH_FUNC_");
}

constexpr char const* path_name = "PATH";
constexpr char const* plain_path = "/usr/bin:/bin:/usr/sbin:/sbin";

}  // namespace

std::string safe_path(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    std::size_t const end = std::min(path.find(':'), path.size());
    std::string_view const folder = path.substr(0, end);
    if (folder.starts_with('/')) (result += result.empty() ? "" : ":") += folder;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return result.empty() ? plain_path : result;
}

std::string child_path(variables const& given) {
  if (auto const own = given.find(path_name); own != given.end()) return safe_path(own->second);
  char const* const inherited = std::getenv(path_name);
  return safe_path(inherited == nullptr ? "" : inherited);
}

std::vector<std::string> child_environment(variables const& given) {
  variables all{{"QN_PID", std::to_string(getpid())}, {"SHLVL", "1"}};
  for (auto const& [name, value] : given) {
    if (!is_text(name, value)) {
      platform::beep();
      platform::log_text(
          "Quirnote: *** string conversion error while getting the UTF-8 version of an environment "
          "variable\n");
    } else if (name.size() + value.size() + 2 > longest_string) {
      platform::log_text("Quirnote: *** variable exceeds ARG_MAX: " + name + "\n");
    } else {
      all.emplace(name, value);
    }
  }
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    std::string_view const text = *entry;
    auto const equals = text.find('=');
    if (equals == text.npos || text.starts_with("QN_")) continue;
    if (is_state_of_shell(text.substr(0, equals))) continue;
    all.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  all.insert_or_assign(path_name, safe_path(all[path_name]));
  std::vector<std::string> result;
  for (auto const& [name, value] : all) result.push_back(name + "=" + value);
  return result;
}

}  // namespace commands
