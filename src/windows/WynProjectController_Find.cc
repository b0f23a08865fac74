#include "documents/printable_name.h"
#include "platform/log.h"
#include "search/project_replace.h"
#include "windows/WynProjectController.h"
#include "windows/project_search.h"

#include <atomic>
#include <set>
#include <stdexcept>
#include <tuple>

// Finding in all files of the project by name, for scripts and macros, without the window for that.

namespace {

using place_key = std::tuple<std::string, std::string, std::string, std::string, std::string>;

place_key key_of(plist::value const& result) {
  auto const text = [&](char const* key) { return result[key].string_or(""); };
  return {text("item"), text("fromLine"), text("fromColumn"), text("toLine"), text("toColumn")};
}

// Ticks what is to be replaced, where the text is still the one that was searched.
std::vector<search::found_file> files_to_replace_in(search::project_results& results,
                                                    plist::array const& replacements) {
  std::set<place_key> keys;
  std::set<std::pair<std::string, std::int64_t>> mementos;
  for (plist::value const& entry : replacements) {
    keys.insert(key_of(entry));
    mementos.emplace(entry["item"].string_or(""), entry["memento"].integer_or(-1));
  }
  for (std::size_t file = 0; file < results.files().size(); ++file) {
    search::found_file const& of = results.files()[file];
    std::int64_t const memento = of.memento ? std::int64_t{*of.memento} : -1;
    bool const is_same = mementos.contains({of.path, memento});
    for (std::size_t n = 0; n < of.matches.size(); ++n)
      results.tick(
          {file, n},
          is_same && keys.contains(key_of(windows::result_dictionary(results, {file, n}))));
  }
  return results.files();
}

plist::array replaced(std::vector<search::found_file> files, std::string const& replacement,
                      bool is_format) {
  search::match_replacement made(replacement, is_format);
  if (made.has_failed()) {
    platform::log("Bad replacement string");
    return {};
  }
  search::project_replace replacing(std::move(files), std::move(made));
  while (replacing.step()) continue;
  plist::array summaries;
  for (auto const& file : replacing.report()) {
    std::size_t const count = file.fault.empty() ? file.count : 0;
    summaries.push_back(plist::dictionary{
        {"item", file.path},
        {"lineContent", documents::printable_name(file.path) + ": " + std::to_string(count) +
                            " replaced" + (file.fault.empty() ? "" : ", " + file.fault)}});
  }
  return summaries;
}

}  // namespace

plist::value WynProjectController::findInProjectWithOptions(plist::value const& options) {
  platform::project_find_values values;
  values.find = options["findString"].string_or("");
  values.replace = options["replaceString"].string_or("");
  values.regular_expression = options["regularExpression"].boolean_or(false);
  values.ignore_case = options["ignoreCase"].boolean_or(false);
  if (values.find.empty()) return plist::array();
  std::string fault;
  auto const search = windows::make_project_search(values, tree_.walk_roots(), fault);
  search::project_results results;
  std::atomic<bool> const never = false;
  try {
    search::search_project(
        search.request, [&](search::file_result found) { search.add(std::move(found), results); },
        never);
  } catch (std::invalid_argument const& error) {
    platform::log("findInProject: bad regexp " + search::text_query::message_of(error));
    return plist::array();
  }
  if (options["action"].string_or("find") == "replace")
    return replaced(files_to_replace_in(results, options["replacements"].elements()),
                    values.replace, values.regular_expression);
  plist::array found;
  for (std::optional<search::result_place> at = results.next({}); at; at = results.next(at))
    found.push_back(windows::result_dictionary(results, *at));
  return found;
}
