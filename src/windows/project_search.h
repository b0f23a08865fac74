#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/panels/project_find_panel.h"
#include "plist/value.h"
#include "search/project_results.h"
#include "search/project_search.h"
#include "text/text_block.h"

namespace windows {

/// A search through files in which the texts that are open are searched as they stand.
struct project_text_search {
  search::project_search_request request;
  std::vector<text::text_slice> texts;            ///< which the request borrows
  std::map<std::string, std::uint32_t> mementos;  ///< of these texts, by path

  /// What has been found in a file is added to the results, of which state of its text it is.
  void add(search::file_result result, search::project_results& results) const;
};

/// By what the window for finding holds. `fault` is set if the scope is no selector. Main thread
/// only.
project_text_search make_project_search(platform::project_find_values const& values,
                                        std::vector<projects::walk_root> roots, std::string& fault);

/// For scripts and macros: "item", "lineContent", "fromLine", "fromColumn", "toLine", "toColumn"
/// (decimal strings, from 1), "memento" of an open text, and "match" with the groups of a pattern.
plist::dictionary result_dictionary(search::project_results const& results,
                                    search::result_place at);

}  // namespace windows
