#pragma once

#include <string>

namespace text {
struct storage;
}

/// For each line its text, then for each run a line with its column, a tab and the names of its
/// scopes, outermost first. The grammar is that of the user default `WynGrammarFile`, else the one
/// that wants files with the name of `path`; without any every line is one run with no name.
std::string batch_scopes(text::storage& storage, std::string const& path);
