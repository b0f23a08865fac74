#pragma once

#include "text/line_place.h"

#include <optional>
#include <string>
#include <string_view>

namespace app {

/// What a URL of the scheme "qrnt" asks for: "qrnt://HOST?url=file:///PATH&line=3&column=2".
struct quirnote_url {
  std::string host;             ///< what is to be done: "open"
  std::string path = {};        ///< of the file, absolute; empty for the document in front
  text::line_place place = {};  ///< line 0 if none is given, or none that is a number
};

/// Nothing for another scheme, and for a "url" that names no local file. A path that isn't absolute
/// is taken from `home`.
std::optional<quirnote_url> parse_quirnote_url(std::string_view url, std::string const& home);

}  // namespace app
