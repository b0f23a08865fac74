#include "commands/command_options.h"

#include "platform/log.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace commands {
namespace {

template <typename Value>
struct word {
  std::string_view text;
  Value meaning;
};

constexpr word<input_kind> inputs[] = {{"none", input_kind::none},
                                       {"selection", input_kind::selection},
                                       {"document", input_kind::document}};
constexpr word<fallback> fallbacks[] = {
    {"none", fallback::none}, {"document", fallback::document}, {"character", fallback::character},
    {"word", fallback::word}, {"line", fallback::line},         {"scope", fallback::scope}};
constexpr word<disposition> outputs[] = {
    {"discard", disposition::discard},
    {"replaceSelectedText", disposition::replace_selected_text},
    {"insertAsText", disposition::replace_selected_text},
    {"replaceDocument", disposition::replace_document},
    {"afterSelectedText", disposition::after_selected_text},
    {"insertAsSnippet", disposition::insert_as_snippet},
    {"showAsHTML", disposition::show_as_html},
    {"showAsTooltip", disposition::show_as_tool_tip},
    {"openAsNewDocument", disposition::open_as_new_document},
    {"replaceSelection", disposition::replace_selection}};

template <typename Value, std::size_t count>
void read_word(plist::value const& command, char const* key, word<Value> const (&words)[count],
               Value& result) {
  std::string const text = command[key].string_or("");
  if (text.empty()) return;
  auto const* const found = std::find_if(std::begin(words), std::end(words),
                                         [&](auto const& each) { return each.text == text; });
  if (found != std::end(words))
    result = found->meaning;
  else
    platform::log_once("the command \"" + command["name"].string_or("") + "\" has an unknown " +
                       key + ": " + text);
}

bool is_set(plist::value const& flag) {
  return flag.boolean_or(flag.integer_or(0) != 0);
}

bool is_program(std::string const& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) && access(path.c_str(), X_OK) == 0;
}

bool is_found(std::string const& name, std::string_view path) {
  if (name.find('/') != name.npos) return name.front() == '/' && is_program(name);
  while (!path.empty()) {
    std::size_t const end = std::min(path.find(':'), path.size());
    std::string const folder(path.substr(0, end));
    if (folder.starts_with('/') && is_program(folder + "/" + name)) return true;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return false;
}

}  // namespace

command_options read_command(plist::value const& command) {
  command_options result;
  result.name = command["name"].string_or("");
  result.script = command["command"].string_or("");
  read_word(command, "input", inputs, result.input);
  read_word(command, "fallbackInput", fallbacks, result.without_selection);
  read_word(command, "output", outputs, result.output);
  result.names_document = command["fallbackInput"].string_or("") == "document";
  result.scope = command["scope"].string_or("");
  result.as_markup = command["inputFormat"].string_or("") == "xml";
  result.keeps_indent = is_set(command["disableOutputAutoIndent"]);
  result.each_row = is_set(command["eachRow"]);
  std::string const before = command["beforeRunningCommand"].string_or("nop");
  result.saves_first = before == "saveActiveFile" || before == "saveModifiedFiles";
  result.saves_all = before == "saveModifiedFiles";
  for (plist::value const& each : command["requiredCommands"].elements()) {
    required_program program{each.string_or(each["command"].string_or("")),
                             each["package"].string_or("")};
    if (!program.name.empty()) result.required.push_back(std::move(program));
  }
  return result;
}

std::optional<disposition> disposition_of_status(int status) {
  constexpr disposition by_status[] = {
      disposition::discard,           disposition::replace_selected_text,
      disposition::replace_document,  disposition::after_selected_text,
      disposition::insert_as_snippet, disposition::show_as_html,
      disposition::show_as_tool_tip,  disposition::open_as_new_document};
  constexpr int first = 200;
  if (status < first || status >= first + static_cast<int>(std::size(by_status)))
    return std::nullopt;
  return by_status[status - first];
}

bool is_failure(int status) {
  return status != 0 && !disposition_of_status(status);
}

std::vector<required_program> missing_programs(std::vector<required_program> const& programs,
                                               std::string const& path) {
  std::vector<required_program> result;
  std::copy_if(programs.begin(), programs.end(), std::back_inserter(result),
               [&](required_program const& each) { return !is_found(each.name, path); });
  return result;
}

std::string report_of_missing(std::vector<required_program> const& missing,
                              std::string const& path) {
  std::string names, packages;
  for (auto const& [name, package] : missing) {
    names += (names.empty() ? "" : ", ") + name;
    if (!package.empty()) packages += " " + package;
  }
  return "it needs " + names + (missing.size() > 1 ? ", which are" : ", which is") +
         " in no folder of the PATH (" + path + ")" +
         (packages.empty() ? "" : ". On Debian and Ubuntu: sudo apt install" + packages);
}

}  // namespace commands
