#pragma once

#include "wire/message.h"

#include <optional>
#include <string>
#include <vector>

namespace quirn {

/// What the tool was called for.
struct arguments {
  enum class purpose { open, help, version };
  purpose what = purpose::open;
  wire::request request = {};
  bool reads_input = false;  ///< "-" was given
  bool passes_environment = false;
};

extern char const* const usage_text;

/// Nothing, with a reason, when they are wrong. Relative names are taken from the working folder.
std::optional<arguments> parse_arguments(std::vector<std::string> const& words, std::string& error);

}  // namespace quirn
