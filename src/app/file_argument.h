#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace app {

/// A file named on the command line, perhaps with a place in it: FILE[:LINE[:COLUMN]].
struct file_argument {
  std::string path;        // absolute
  std::size_t line = 0;    // from 1; 0 when none was given
  std::size_t column = 0;  // from 1; 0 when none was given
};

/// An existing file whose name is all of `argument` wins over the reading as a place. Relative
/// paths are taken from `directory`.
file_argument parse_file_argument(std::string_view argument, std::string const& directory);

}  // namespace app
