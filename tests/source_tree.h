#pragma once

#include <string>

/// The path of a file of the source tree, named from its root, e.g.
/// `source_file("share/menus.plist")`. Functions, so that the command that compiles a test doesn't
/// depend on where the tree lies, and a compiler cache serves all work trees.
std::string source_file(std::string const& name);
/// The path of a file in `tests/data`.
std::string test_data(std::string const& name);
