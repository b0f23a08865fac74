#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace regex {

/// Conveniences on UTF-8 strings. Any thread.

/// Whether the pattern (Oniguruma's) matches anywhere in the string; a "!" before it negates.
/// An empty pattern answers false. One that does not compile, which is told once on standard error,
/// matches everything. Patterns are compiled once a process.
bool isEqualToRegEx(std::string_view string, std::string_view pattern);

/// Whether isEqualToRegEx can use the pattern. `fault` says why not, if it has not been reported
/// yet.
bool isRegEx(std::string_view pattern, std::string& fault);

/// The groups of the first match in index order, group 0 first; of one that took no part, nothing.
/// The pattern is the own engine's (regex/find.h). Nothing when there is no match.
std::optional<std::vector<std::string>> componentsInRegEx(std::string_view string,
                                                          std::string_view pattern);

}  // namespace regex
