#pragma once

#include "plist/value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Actions to perform one after the other.
struct batch_macro {
  struct step {
    plist::value command;  ///< a string: the selector
    plist::value argument;
  };
  std::vector<step> steps;
  bool complete = true;     // false when something of the file had to be left out
  std::uint32_t times = 1;  // how often all of them are performed
};

/// Reads a macro from an XML property list: a dictionary with `commands`, or a bare array of steps,
/// each a dictionary with `command` and perhaps `argument`. A step of another shape is reported on
/// standard error with file, number and reason, and left out; so is a whole file that can't be
/// read.
/// "-" is standard input.
batch_macro read_batch_macro(std::string const& path);
