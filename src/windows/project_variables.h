#pragma once

#include "plist/value.h"

#include <optional>
#include <string>
#include <string_view>

/// A project's variables as the user edits them: a property list of those that are enabled.
namespace windows {

/// On one line, `{ NAME = "value"; }`, in the order that they have.
std::string shown_variables(plist::array const& variables);

/// The variables that such a text makes of `variables`; those that aren't enabled stay. Nothing if
/// it can't be read, or names what can't be a variable.
std::optional<plist::array> edited_variables(std::string_view text, plist::array const& variables);

}  // namespace windows
