#pragma once

#include <string>
#include <string_view>

#include "grammar/pattern.h"

namespace grammar {

/// Whether a pattern of `end` refers to groups of `begin`: a backslash and a digit.
bool has_back_references(std::string_view pattern);

/// Puts the texts of a match's groups, which stand in `text`, in place of the references to them,
/// such that they match literally. A group that took no part gives nothing.
std::u16string expand_back_references(std::u16string_view pattern, std::u16string_view text,
                                      match_groups const& match);

/// Appends `units` with a backslash before each that means something in a pattern.
void escape_regex(std::u16string_view units, std::u16string& out);

}  // namespace grammar
