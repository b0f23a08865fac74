#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plist/value.h"

/// Reading and writing the property lists of bundles. Main thread only, unless stated otherwise.
namespace bundles {

/// Writes "Quirnote: " and the message to standard error, each message once in a process.
/// Any thread.
void complain(std::string const& message);

/// The dictionary in the file; nothing when the file can't be read, and that is complained
/// about. Any thread.
plist::value read_dictionary(std::string const& path);

/// Writes over the file. False, after a complaint, on failure.
bool write_dictionary(std::string const& path, plist::dictionary const& content);

/// The values under `key` if they are strings, in an array.
std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key);

/// Copies a folder, or a file, with all in it; links stay links. With `skip_hidden` what begins
/// with a dot is left out, at every depth. False on failure; `to` may then hold a part.
bool copy_tree(std::string const& from, std::string const& to, bool skip_hidden = false);
/// Removes a folder and all in it, as far as it can.
void remove_tree(std::string const& folder);

/// The names in a folder that aren't hidden, in the order of their bytes. Empty when it can't be
/// read.
std::vector<std::string> visible_names(std::string const& folder);

/// A fresh random identifier in upper-case text form.
std::string stringWithUUID();

void beep();

}  // namespace bundles
