#pragma once

#include <cstddef>
#include <string>

namespace styles {

/// A function, heading or the like of a document, for the list of symbols.
struct symbol {
  std::string name;
  std::size_t line;  ///< counted from 1
  friend bool operator==(symbol const&, symbol const&) = default;
};

}  // namespace styles
