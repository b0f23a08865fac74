#pragma once

#include <cstddef>

/// What makes up the score of a selector. Lengths of names are in bytes.
namespace scope {

constexpr double no_match = -1.0;

/// Of a selector's part on the scope that it matches: the more of the scope it names, the higher.
constexpr double score_of_part(std::size_t part, std::size_t scope) {
  return (static_cast<double>(part) + 1.0) / (static_cast<double>(scope) + 2.0);
}

/// By how much a scope, matched or not, makes what stands further out count for less.
constexpr double decay(std::size_t scope) {
  return static_cast<double>(scope) + 3.0;
}

}  // namespace scope
