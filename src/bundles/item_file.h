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

/// Puts the new content in the place of the file's, so that whoever reads it, and a kill, finds one
/// of both whole. False, after a complaint, on failure.
bool write_dictionary(std::string const& path, plist::dictionary const& content);
bool write_file(std::string const& path, std::string_view bytes);

/// The values under `key` if they are strings, in an array.
std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key);

/// Copies a folder, or a file, with all in it, for a place where nothing stands yet. Links stay
/// links, if they are relative and lead to something in the folder; others are left out with a
/// complaint. So are marks by which a program gets its owner's rights. With `skip_hidden` what
/// begins with a dot is left out, at every depth. False on failure, also for a file of more than
/// 256 MiB; `to` may then hold a part.
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
