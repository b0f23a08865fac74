#pragma once

#include <optional>
#include <string>

#include "plist/value.h"

namespace plist {

struct write_result {
  std::string text;                  // empty when there is an error
  std::optional<std::string> error;  // which entry can't be written and why
};

/// Writes `v` as an XML property list, such that read_xml gives an equal value (NaN, which equals
/// nothing, stays NaN). The same value gives the same bytes: keys in the order of their bytes,
/// tabs for indentation, a line feed at the end.
///
/// What the format can't hold is an error, never left out or altered: control characters other
/// than tab, line feed and carriage return, U+FFFE and U+FFFF, bytes that are not UTF-8 (among
/// them lone surrogates), dates outside of the years 1 to 9999, nothing, nesting beyond max_depth.
write_result write_xml(value const& v);

}  // namespace plist
