#include "commands/WynExecuteCommandManager.h"

#include "platform/desktop.h"
#include "settings/store.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr char const* options_key = "WynExecuteCommandPanelOptions";
constexpr char const* history_key = "WynExecuteCommandMenuHistory";
constexpr std::size_t most_entries = 7;
constexpr std::size_t longest_title = 50;  // bytes

platform::filter_values values_of(plist::value const& filter) {
  return {filter["command"].string_or(""), filter["input"].string_or("selection"),
          filter["output"].string_or("replaceSelection"), filter["eachRow"].boolean_or(false)};
}

plist::dictionary filter_of(platform::filter_values const& values) {
  // What is selected isn't what was read then.
  bool const replaces_document = values.input == "document" && values.output == "replaceSelection";
  plist::dictionary filter{{"command", values.command},
                           {"input", values.input},
                           {"output", replaces_document ? "replaceDocument" : values.output}};
  if (values.each_row) filter.insert_or_assign("eachRow", true);
  return filter;
}

// One line of it, cut between characters.
std::string title_of(std::string const& command) {
  std::string title = command.substr(0, command.find('\n'));
  if (title.size() <= longest_title) return title;
  std::size_t end = longest_title;
  while (end > 0 && (title[end] & 0xC0) == 0x80) --end;
  return title.substr(0, end) + "\u2026";
}

}  // namespace

namespace WynExecuteCommandManager {

plist::value options() {
  return settings::store().dictionary(options_key);
}

std::vector<plist::value> history() {
  std::vector<plist::value> entries;
  for (plist::value const& entry : settings::store().array(history_key))
    if (!entry["command"].string_or("").empty()) entries.push_back(entry);
  return entries;
}

void addToHistory(plist::value const& filter) {
  plist::dictionary newest = filter.entries();
  newest.insert_or_assign("lastUsed", static_cast<std::int64_t>(std::time(nullptr)));
  plist::array kept{std::move(newest)};
  for (plist::value const& entry : history())
    if (entry["command"] != filter["command"] && kept.size() < most_entries) kept.push_back(entry);
  settings::store().set(history_key, std::move(kept));
}

std::vector<platform::menu_item> historyMenu() {
  std::vector<platform::menu_item> items;
  for (plist::value const& entry : history()) {
    platform::menu_item& item = items.emplace_back();
    item.title = title_of(entry["command"].string_or(""));
    item.selector = "executeCommandWithTag:";
    item.argument = static_cast<std::int64_t>(items.size() - 1);
  }
  return items;
}

std::optional<plist::value> askForFilter() {
  platform::command_panel_request request{
      values_of(options()),
      {},
      {{"none", "Nothing"}, {"selection", "Selection or Document"}, {"document", "Document"}},
      {{"discard", "Discard"},
       {"replaceSelection", "Replace Input"},
       {"replaceDocument", "Replace Document"},
       {"afterSelectedText", "Insert After Selection"},
       {"insertAsSnippet", "Insert as Snippet"},
       {"showAsHTML", "Show as HTML"},
       {"showAsTooltip", "Show as Tool Tip"},
       {"openAsNewDocument", "New Document"}}};
  for (plist::value const& entry : history()) request.history.push_back(values_of(entry));
  auto const chosen = platform::desktop::current().commands().run(request);
  if (!chosen || chosen->command.empty()) return std::nullopt;
  plist::value const filter = filter_of(*chosen);
  settings::store().set(options_key, filter);
  addToHistory(filter);
  return filter;
}

}  // namespace WynExecuteCommandManager
