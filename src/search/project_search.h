#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "path/file_error.h"
#include "projects/file_walk.h"
#include "search/file_search.h"

namespace search {

struct project_search_request {
  file_query query;
  std::vector<projects::walk_root> roots;
  projects::walk_options files;
  /// Files that are open are searched as they stand there. The texts are borrowed.
  std::map<std::string, text::unit_view> open;
  unsigned threads = 0;  ///< 0 for one a processor
};

/// Searches all files of a project on several threads, and gives the results to `take` on the
/// calling thread, in the order of the project's tree, as soon as those of all files before have
/// been given. Ends once `cancelled` is set, which `take` may do. Memory doesn't grow with the
/// number of files: those that are far ahead wait for `take`.
///
/// Gives the folders that could not be read. Throws std::invalid_argument for a bad pattern, before
/// anything else, and std::bad_alloc. Any thread.
std::vector<path::file_error> search_project(project_search_request const& request,
                                             std::function<void(file_result)> const& take,
                                             std::atomic<bool> const& cancelled);

}  // namespace search
