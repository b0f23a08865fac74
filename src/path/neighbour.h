#pragma once

#include <string>

#include "path/file_place.h"
#include "path/file_system_calls.h"

/// Files beside another one, ".NAME.quirnote-NUMBER", that are written to take its place. If the
/// program is killed meanwhile they stay behind, and are known by their names.
namespace path {

/// A name of that form that nobody is likely to have taken.
std::string neighbour_of(std::string const& name);

/// Tells other programs that the file is being written, until the descriptor is closed.
void hold_neighbour(int descriptor);

/// Removes those of our own beside `target` that have been left alone for a minute and that nobody
/// holds.
void remove_left_over_neighbours(open_place const& target, file_system_calls& calls);

}  // namespace path
