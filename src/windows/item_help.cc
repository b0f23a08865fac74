#include "windows/item_help.h"

#include "commands/command_options.h"

#include <string_view>
#include <utility>

namespace windows {
namespace {

// By the words of "writesTo".
constexpr std::pair<std::string_view, char const*> places[] = {
    {"temporary", "Writes temporary files."},
    {"folder", "Writes into the folder of the document."},
    {"anywhere", "May write anywhere, as what it runs does."}};

void add(std::string& text, std::string const& sentence) {
  if (sentence.empty()) return;
  if (!text.empty()) text += ' ';
  text += sentence;
}

}  // namespace

std::string help_of(BundleItem& item) {
  plist::value const& content = item.content();
  std::string result = content["help"].string_or("");
  std::string programs;
  commands::command_options const options = commands::read_command(content);
  for (auto const& each : options.required) programs += (programs.empty() ? "" : ", ") + each.name;
  if (!programs.empty()) add(result, "Needs " + programs + ".");
  if (options.saves_first) add(result, "Saves the document first.");
  for (plist::value const& place : content["writesTo"].elements())
    for (auto const& [word, sentence] : places)
      if (place.string_or("") == word) add(result, sentence);
  return result;
}

}  // namespace windows
