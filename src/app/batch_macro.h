#pragma once

#include "plist/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

/// Actions to perform one after the other.
struct batch_macro {
  struct step {
    plist::value command;  ///< a string: the selector
    plist::value argument;
  };
  std::vector<step> steps;
  std::string item = {};    // a bundle item in the place of steps: its UUID or its name
  std::uint32_t times = 1;  // how often all of them are performed
};

/// Reads a macro from an XML property list: a dictionary with `commands`, or a bare array of steps,
/// each a dictionary with `command` and perhaps `argument`. Nothing when any part of it can't be
/// read or is something else, since the rest might do harm without it: that has been reported on
/// standard error with file, place and reason. "-" is standard input.
std::optional<batch_macro> read_batch_macro(std::string const& path);

}  // namespace app
