#pragma once

#include "plist/value.h"

#include <string_view>

/// Options that differ by language. A domain is a user default: a dictionary from the name of a
/// scope, such as "source.python", to a dictionary with the option under its key and the date under
/// "updated" at which it was set.
///
///     scoped_settings::set_value("source.c", 8, "tabSize", "WynTextViewScopedTabSize");
namespace scoped_settings {

/// The value set for the scope that has the most leading components in common with `root_scope`;
/// of several the one set last. A scope without any in common still counts, so that a setting made
/// for one language serves those without one. Nothing when the domain has no entry.
plist::value value_for(std::string_view root_scope, std::string_view key, std::string_view domain);

/// Replaces the entry of `root_scope`, which may be empty, by this value with the present date.
/// `note` as for platform::user_defaults::set.
void set_value(std::string_view root_scope, plist::value value, std::string_view key,
               std::string_view domain, plist::value const& note = {});

/// Now, as property lists count.
plist::date now();

}  // namespace scoped_settings
