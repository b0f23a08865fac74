#include "app/file_argument.h"

#include "path/file_system.h"
#include "path/path.h"
#include "wire/named_place.h"

namespace app {

file_argument parse_file_argument(std::string_view argument, std::string const& directory) {
  auto const absolute = [&](std::string_view name) {
    // The folder may have been deleted.
    return directory.empty() ? std::string(name) : path::join(directory, std::string(name));
  };
  auto const found = wire::parse_named_place(
      argument, [&](std::string_view name) { return path::exists(absolute(name)); });
  if (found.line == 0) return {absolute(found.name)};
  return {absolute(found.name), text::line_place{found.line, found.column}};
}

}  // namespace app
