#pragma once

#include "plist/value.h"

#include <functional>
#include <string>

namespace keys {

/// Hears of each fault in a file, as one line that names the file and what is wrong.
using file_complaint = std::function<void(std::string const& message)>;

/// The normalised key bindings of a property list, as XML or in the text dialect. What can't be
/// used is left out with a complaint; a file that can't be read at all gives no bindings.
plist::dictionary read_key_binding_file(std::string const& path, file_complaint const& complain);

}  // namespace keys
