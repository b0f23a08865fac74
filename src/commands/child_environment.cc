#include "commands/child_environment.h"

#include "platform/desktop.h"
#include "platform/log.h"

#include <unistd.h>

#include <string_view>

namespace commands {
namespace {

bool is_text(std::string const& name, std::string const& value) {
  return !name.empty() && name.find('=') == name.npos && name.find('\0') == name.npos &&
         value.find('\0') == value.npos;
}

}  // namespace

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
    all.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  std::vector<std::string> result;
  for (auto const& [name, value] : all) result.push_back(name + "=" + value);
  return result;
}

}  // namespace commands
