#include "app/file_argument.h"

#include "path/file_system.h"
#include "path/path.h"

#include <charconv>
#include <optional>

namespace app {
namespace {

// Takes ":NUMBER" off the end of `text`.
std::optional<std::size_t> take_number(std::string_view& text) {
  std::size_t const colon = text.rfind(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == text.size())
    return std::nullopt;
  std::size_t number = 0;
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data() + colon + 1, end, number);
  if (result.ec != std::errc() || result.ptr != end || number == 0) return std::nullopt;
  text = text.substr(0, colon);
  return number;
}

}  // namespace

file_argument parse_file_argument(std::string_view argument, std::string const& directory) {
  auto const absolute = [&](std::string_view name) {
    // The folder may have been deleted.
    return directory.empty() ? std::string(name) : path::join(directory, std::string(name));
  };
  if (path::exists(absolute(argument))) return {absolute(argument)};

  std::string_view rest = argument;
  auto const last = take_number(rest);
  if (!last) return {absolute(argument)};
  if (path::exists(absolute(rest))) return {absolute(rest), text::line_place{*last}};
  std::string_view shorter = rest;
  if (auto const line = take_number(shorter))
    return {absolute(shorter), text::line_place{*line, *last}};
  return {absolute(rest), text::line_place{*last}};
}

}  // namespace app
