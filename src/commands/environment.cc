#include "commands/environment.h"

#include "platform/system/library_folders.h"
#include "settings/store.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <set>
#include <vector>

namespace commands {
namespace {

std::string full_name_of_user() {
  passwd const* const entry = getpwuid(getuid());
  if (entry == nullptr) return "";
  std::string const details = entry->pw_gecos == nullptr ? "" : entry->pw_gecos;
  std::string const name = details.substr(0, details.find(','));
  return name.empty() ? entry->pw_name : name;
}

std::string program_folder() {
  std::string path(4096, '\0');
  ssize_t const length = readlink("/proc/self/exe", path.data(), path.size());
  path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  return path;
}

}  // namespace

variables environment_for(platform::responder* first) {
  variables result;
  for (plist::value const& entry : settings::store().array("WynShellVariables")) {
    std::string const name = entry["variable"].string_or("");
    if (!name.empty() && entry["enabled"].boolean_or(true))
      result.insert_or_assign(name, entry["value"].string_or(""));
  }
  result.emplace("QN_FULLNAME", full_name_of_user());
  result.insert_or_assign("QN_APP_PATH", program_folder());
  std::vector<plist::dictionary> contributed;
  std::set<platform::responder const*> seen;
  for (auto* at = first; at != nullptr && seen.insert(at).second; at = at->nextResponder())
    contributed.push_back(at->environmentVariables());
  for (auto each = contributed.rbegin(); each != contributed.rend(); ++each)
    for (auto const& [name, value] : *each) result.insert_or_assign(name, value.string_or(""));
  return result;
}

std::string directory_for(variables const& environment) {
  auto const folder = environment.find("QN_DIRECTORY");
  struct stat info;
  bool const exists = folder != environment.end() && stat(folder->second.c_str(), &info) == 0 &&
                      S_ISDIR(info.st_mode);
  return exists ? folder->second : "";
}

}  // namespace commands
