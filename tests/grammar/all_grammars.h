#pragma once

#include <memory>
#include <string>
#include <vector>

#include "grammar/rule.h"

/// The whole of a file of the source tree.
std::string content_of(std::string const& file);

/// The grammars of all bundles that ship.
std::vector<grammar::catalogue::entry> shipped_entries();

/// Those, with the one of that scope name first; the program ends if there is none.
std::shared_ptr<grammar::catalogue const> shipped_catalogue(std::string const& first);

/// A grammar in the text form of property lists.
grammar::catalogue::entry entry_of(std::string const& text);
