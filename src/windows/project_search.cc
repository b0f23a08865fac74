#include "windows/project_search.h"

#include "documents/WynDocument.h"
#include "documents/WynDocumentCache.h"
#include "documents/file_text.h"
#include "platform/utf.h"
#include "windows/WynProjectController.h"

#include <optional>
#include <sstream>
#include <utility>

namespace windows {
namespace {

constexpr std::size_t excerpt = 200;  // bytes of a line at either side of a match

std::vector<std::string> words_of(std::string const& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace

void project_text_search::add(search::file_result result, search::project_results& results) const {
  auto const memento = mementos.find(result.path);
  bool const is_open = memento != mementos.end() && !result.version;
  results.add(std::move(result), is_open ? std::optional(memento->second) : std::nullopt);
}

project_text_search make_project_search(platform::project_find_values const& values,
                                        std::vector<projects::walk_root> roots,
                                        std::string& fault) {
  project_text_search made;
  made.request.query = {.sought = unicode::to_utf16(values.find),
                        .regular_expression = values.regular_expression,
                        .ignore_case = values.ignore_case,
                        .rules = WynProjectController::textFileRules(),
                        .supplementary_pairs = documents::preserves_supplementary_characters(),
                        .whole_words = values.whole_words,
                        .excerpt = excerpt};
  if (!values.scope.empty())
    made.request.query.scopes = search::scope_filter::make(values.scope, fault);
  made.request.roots = std::move(roots);
  made.request.files = {words_of(values.included), words_of(values.excluded), values.gitignore};
  for (auto const& document : WynDocumentCache::instance().documents()) {
    if (document->openCount() == 0) continue;
    text::storage& storage = document->storage();
    made.texts.push_back(storage.slice(storage.begin_of_line(0), storage.end(-1)));
    made.request.open.emplace(document->filename(), made.texts.back().units);
    made.mementos.emplace(document->filename(), storage.current_memento);
  }
  return made;
}

plist::dictionary result_dictionary(search::project_results const& results,
                                    search::result_place at) {
  search::found_file const& file = results.files()[at.file];
  search::file_match const& match = results.match(at);
  auto const number = [](std::size_t from_0) { return std::to_string(from_0 + 1); };
  plist::dictionary result{{"item", file.path},
                           {"lineContent", results.line(at).text},
                           {"fromLine", number(match.first.line)},
                           {"fromColumn", number(match.first.column)},
                           {"toLine", number(match.last.line)},
                           {"toColumn", number(match.last.column)}};
  if (file.memento) result.emplace("memento", *file.memento);
  plist::dictionary groups;
  for (auto const& [group, range] : match.captures)
    groups.emplace(std::to_string(group), plist::array{range.first, range.second});
  if (!groups.empty()) result.emplace("match", std::move(groups));
  return result;
}

}  // namespace windows
