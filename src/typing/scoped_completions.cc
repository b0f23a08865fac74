#include "typing/scoped_completions.h"

#include "commands/environment.h"
#include "commands/shell.h"
#include "platform/log.h"
#include "platform/utf.h"

#include <unordered_set>

namespace typing {
namespace {

class word_list {
 public:
  void add(std::string_view word) {
    std::u16string units = unicode::to_utf16(word);
    if (!units.empty() && known_.insert(units).second) words_.push_back(std::move(units));
  }
  std::vector<std::u16string> take() { return std::move(words_); }

 private:
  std::vector<std::u16string> words_;
  std::unordered_set<std::u16string> known_;
};

}  // namespace

bool disables_words(plist::value const& settings) {
  plist::value const& value = settings["disableDefaultCompletion"];
  return value.boolean_or(value.integer_or(0) != 0);
}

std::optional<std::vector<std::u16string>> scoped_completions(plist::value const& settings,
                                                              std::u16string_view typed,
                                                              platform::responder& first) {
  word_list words;
  std::string const command = settings["completionCommand"].string_or("");
  if (command.empty()) {
    for (plist::value const& word : settings["completions"].elements())
      words.add(word.string_or(""));
    return words.take();
  }
  // What it says of errors is no word.
  std::string const quiet = command.starts_with("#!") ? "" : "exec 2>/dev/null\n";
  commands::shell_request request{.script = quiet + command,
                                  .environment = commands::environment_for(&first)};
  request.environment["QN_CURRENT_WORD"] = unicode::to_utf8(typed);
  commands::shell_result const result = commands::run_shell(request);
  if (!result.error.empty())
    platform::log_once("the completion command \"" + command + "\": " + result.error);
  if (result.cancelled) return std::nullopt;
  std::string_view rest = result.output;
  while (!rest.empty()) {
    std::size_t const end = std::min(rest.find('\n'), rest.size());
    words.add(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return words.take();
}

}  // namespace typing
