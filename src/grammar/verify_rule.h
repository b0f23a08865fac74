#pragma once

#include <optional>
#include <string>

#include "plist/value.h"

namespace grammar {

/// The first fault of a rule or of the rules in it, as a person who edits the grammar is told it;
/// nothing for a sound one. Any thread.
std::optional<std::string> verify_rule(plist::value const& rule);
/// The same for a list of rules.
std::optional<std::string> verify_rules(plist::array const& rules);

}  // namespace grammar
