#pragma once

#include <string>
#include <string_view>

#include "platform/user_defaults.h"

namespace settings {

/// The user defaults of the process, with the defaults of the table: all settings are read
/// and changed here. A value in the file that its setting can't take counts as not set, and is
/// reported once. Main thread only.
///
///     bool const atomically = settings::store().boolean("WynSaveAtomically");
platform::user_defaults& store();

/// Why the key can't be given this value, as a sentence without its full stop; empty if it can.
/// Keys with a dot belong to bundles, and take everything.
std::string fault_of(std::string_view key, plist::value const& value);

}  // namespace settings
