#pragma once

#include "text/line_place.h"

#include <optional>
#include <string>
#include <string_view>

namespace app {

/// A file named on the command line, perhaps with a place in it: FILE[:LINE[:COLUMN]].
struct file_argument {
  std::string path;  // absolute
  std::optional<text::line_place> place = {};
};

/// An existing file whose name is all of `argument` wins over the reading as a place. Relative
/// paths are taken from `directory`.
file_argument parse_file_argument(std::string_view argument, std::string const& directory);

}  // namespace app
