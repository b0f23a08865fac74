#pragma once

#include <set>
#include <string>

#include "grammar/rule.h"

/// What can be said of the scopes in texts of a language without parsing one.
namespace grammar {

/// The names of all scopes that a grammar and those that it includes could give. Reads all of
/// these.
std::set<std::string> possible_scopes(catalogue const& all_rules, unsigned start_rule);

}  // namespace grammar

namespace scope {

/// Whether a selector may apply in a text that has no other scopes than these. Never wrongly false;
/// true also where only their order or what is subtracted stands against it. Main thread only.
bool may_apply(std::string const& selector, std::set<std::string> const& scopes);

}  // namespace scope
