#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"

namespace plist {

/// How deep arrays and dictionaries may nest in what is read and written, in every format.
constexpr int max_depth = 512;

/// Where a text could not be read, and why. Line and column count from 1; columns are characters.
struct read_error {
  std::size_t line = 1;
  std::size_t column = 1;
  std::string message;
};

struct read_result {
  plist::value value;
  std::optional<read_error> error;  // when set, `value` is nothing
};

/// The line at which each value begins, by the way to it: keys, and indexes as decimal numbers.
using value_lines = std::map<std::vector<std::string>, std::size_t>;

/// Reads an XML property list. Strict: anything the format does not provide for is an error, as is
/// a document type with declarations of its own, so that entities cannot blow up. Under a key that
/// comes twice the later value holds. Fills `lines` if given. Never throws but for lack of memory;
/// any thread.
read_result read_xml(std::string_view bytes, std::size_t max_size = std::size_t{256} << 20,
                     value_lines* lines = nullptr);

}  // namespace plist
