#include "app/link_tool.h"

#include "commands/environment.h"
#include "commands/shell.h"
#include "documents/printable_name.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/desktop.h"
#include "platform/system/library_folders.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "windows/choice_list.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

namespace app {
namespace {

constexpr char const* key = "WynEnhancedTerminalUsage";
constexpr char const* name = "quirn";
constexpr char const* mark = "===== QUIRNOTE MAGIC =====";
constexpr char const* script =
    R"(bash --login -c '{ echo ===== QUIRNOTE MAGIC =====; { tr <<<"$PATH" : \\n|sort|uniq; })"
    R"(|grep -v Quirnote|grep -e "^.*/bin$"; }' </dev/null 2>/dev/null)";

std::string tool_path() {
  return path::join(platform::module_folder(), "../../bin/quirn");
}

bool is_program(std::string const& path) {
  struct stat info;
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
         ::access(path.c_str(), X_OK) == 0;
}

bool can_take_links(std::string const& folder) {
  struct stat info;
  return ::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
         ::access(folder.c_str(), W_OK | X_OK) == 0;
}

std::string target_of(std::string const& link) {
  char target[4096];
  ssize_t const size = ::readlink(link.c_str(), target, sizeof target);
  return {target, size > 0 ? static_cast<std::size_t>(size) : 0};
}

void remember(std::string const& tool, std::string const& link) {
  settings::store().set(
      key, plist::dictionary{{"didCreateLink", true}, {"linkPath", link}, {"path", tool}});
}

std::string shown(std::string const& path) {
  return documents::printable(path::abbreviate_with_tilde(path));
}

void say(std::string const& title, std::string const& text) {
  platform::desktop::current().alerts().run(
      {title, text, {"Continue"}, 0, false, "", platform::alert_icon::information});
}

// Those of the home folder first: they need nobody else's leave.
std::vector<std::string> usable_folders(std::vector<std::string> folders) {
  std::erase_if(folders, [](auto const& folder) { return !can_take_links(folder); });
  std::string const home = platform::home_folder() + "/";
  std::stable_partition(folders.begin(), folders.end(),
                        [&](auto const& folder) { return folder.starts_with(home); });
  return folders;
}

std::string choose(std::vector<std::string> const& folders) {
  windows::choice_list list(
      "Link quirn Into Which Folder?",
      {folders.size(), [&](std::size_t n) { return std::string_view(folders[n]); },
       [&](std::size_t n) {
         platform::picker_row row;
         std::string const text = shown(folders[n]);
         row.detail = "quirn can be called in terminals then";
         row.title = unicode::to_utf16(text);
         return row;
       },
       std::nullopt});
  auto const row = platform::desktop::current().pickers().run(list.request(), list);
  return row ? folders[list.entry(row->row)] : "";
}

}  // namespace

std::vector<std::string> folders_in(std::string const& output) {
  std::istringstream lines(output);
  std::vector<std::string> result;
  bool counts = false;
  for (std::string line; std::getline(lines, line);) {
    if (counts && line.starts_with('/')) result.push_back(line);
    if (line == mark) {
      counts = true;
      result.clear();
    }
  }
  return result;
}

std::string make_link(std::string const& tool, std::string const& link) {
  struct stat info;
  std::string const target = target_of(link);
  bool const is_free =
      ::lstat(link.c_str(), &info) != 0 ||
      (S_ISLNK(info.st_mode) && (path::name(target) == name || !path::exists(link)));
  if (!is_free) return "There is another program " + shown(link) + ", which stays.";
  // Under another name first, so that there is always one.
  std::string const next = link + "." + std::to_string(::getpid());
  if (::symlink(tool.c_str(), next.c_str()) == 0 && ::rename(next.c_str(), link.c_str()) == 0)
    return "";
  std::string const reason = std::strerror(errno);
  ::unlink(next.c_str());
  return shown(link) + " could not be made: " + reason;
}

void offer_link_to_tool() {
  std::string const tool = tool_path();
  if (!is_program(tool))
    return say("The Tool Is Missing", "There is no program " + shown(tool) + ".");
  auto const output = commands::run_shell({.script = script});
  if (output.cancelled) return;
  auto const all = folders_in(output.output);
  for (std::string const& folder : all)
    if (path::resolve(path::join(folder, name)) == path::resolve(tool))
      return say("quirn Is There", "Terminals find quirn in " + shown(folder) + " already.");
  auto const folders = usable_folders(all);
  if (folders.empty())
    return say("No Folder for quirn",
               "You can change no folder on your PATH. Make a folder ~/bin and log in again, or "
               "enter this in a terminal:\n\nsudo ln -s '" +
                   documents::printable(tool) + "' /usr/local/bin/quirn");
  std::string const folder = choose(folders);
  if (folder.empty()) return;
  std::string const link = path::join(folder, name);
  if (std::string const fault = make_link(tool, link); !fault.empty())
    return say("Couldn't Link quirn", fault);
  remember(tool, link);
  say("quirn Is Linked", shown(link) +
                             " opens files in Quirnote from any terminal. "
                             "\u201cman quirn\u201d and \u201cquirn --help\u201d describe it.");
}

void update_link_to_tool() {
  plist::value const made = settings::store().get(key);
  std::string const link = made["linkPath"].string_or(""), former = made["path"].string_or("");
  std::string const tool = made["didCreateLink"].boolean_or(false) ? tool_path() : "";
  if (tool.empty() || link.empty() || former == tool || is_program(former)) return;
  if (target_of(link) == former && is_program(tool) && make_link(tool, link).empty())
    remember(tool, link);
}

}  // namespace app
