#pragma once

#include "plist/value.h"

#include <string>

namespace app {

/// The menus of the application, as menus.plist has them.
struct menu_file {
  plist::value menus;
  std::string fault;  ///< why these are the built-in ones, for the user; empty if they aren't
};

/// Reads menus from a file, all of them or none: where it is missing or faulty there is a small
/// built-in menu bar with which files can be opened, edited and saved.
menu_file read_menu_file(std::string const& path);

}  // namespace app
