#pragma once

#include <optional>
#include <string>

#include "plist/value.h"

namespace grammar {

/// The first fault of a rule or of the rules in it, as a message for the author of the grammar;
/// nothing for a sound one. Any thread. For editing grammars in a window, which is to come: so far
/// only tests use it, and `--check-bundle` has checks of its own.
std::optional<std::string> verify_rule(plist::value const& rule);
/// The same for a list of rules.
std::optional<std::string> verify_rules(plist::array const& rules);

}  // namespace grammar
