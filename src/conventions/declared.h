#pragma once

#include <optional>
#include <string>

#include "conventions/indentation.h"
#include "encoding/charset.h"
#include "encoding/line_ending.h"

namespace conventions {

/// What the project that a file is in says about it, in `.editorconfig`. What it doesn't say, or
/// says in a way that isn't known, is missing.
struct declared {
  conventions::indentation indentation;
  std::optional<encoding::charset_t> charset;
  std::optional<bool> byte_order_mark;  ///< of UTF-8
  std::optional<line_ending::type> line_ending;
  std::optional<bool> trim_trailing_blanks;
  std::optional<bool> final_newline;
  friend bool operator==(declared const&, declared const&) = default;
};

/// Nothing for an empty path, and with the user default WynFollowEditorConfig off.
declared declared_for(std::string const& path);

}  // namespace conventions
