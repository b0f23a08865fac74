#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace wire {

/// What an argument FILE[:LINE[:COLUMN]] names.
struct named_place {
  std::string_view name;   ///< a piece of the argument
  std::size_t line = 0;    ///< from 1; 0 if there is none
  std::size_t column = 0;  ///< likewise
};

/// An existing file whose name is more of the argument wins over the reading of it as a place.
named_place parse_named_place(std::string_view argument,
                              std::function<bool(std::string_view name)> const& exists);

}  // namespace wire
