#pragma once

#include <string>

#include "platform/shown_characters.h"

/// The alerts of the manager of bundles. Without a desktop, on standard error, and
/// questions get the answer that changes nothing. Main thread only.
namespace bundles {

void tell(std::string const& title, std::string const& text);
/// Whether the user wants to update what is installed already.
bool ask_to_update(std::string const& title, std::string const& text);
/// A bundle in this directory is skipped. With a desktop that is told in a later turn of its loop.
void tell_could_not_load(std::string const& directory);

using platform::quoted;

}  // namespace bundles
