#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"

namespace plist {

/// Sorts as a reader would look them up: case, width and composition make no difference, accents
/// and punctuation do, and a run of digits counts as a number. Names that compare equal keep their
/// order. The same in every locale.
void SortArrayLexicographically(std::vector<std::string>& names);

/// Bytes that sort as names do by SortArrayLexicographically, for many comparisons. Equal for names
/// that compare equal. Any thread.
std::string lexicographic_key(std::string_view name);

/// A dictionary's keys in the order in which they print: first the keys of a grammar rule in their
/// customary order, then the others lexicographically.
std::vector<std::string> KeySortedArray(dictionary const& entries);

}  // namespace plist
