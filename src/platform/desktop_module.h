#pragma once

#include "platform/desktop.h"

#include <memory>
#include <string>

namespace platform {

/// What the library with the window system's code offers. It is loaded only when a window or a
/// picture is wanted, so that batch mode starts without it.
class desktop_module {
 public:
  virtual ~desktop_module() = default;

  /// The desktop with windows, from then on the current one; may take options of the window system
  /// out of `argv`. Null with a reason when there is no display.
  virtual std::unique_ptr<desktop> make_desktop(int& argc, char** argv, std::string& error) = 0;

  /// Paints `client` at `columns` times `rows` cells, without a display: the bytes of a PNG file.
  /// Sets and resets the client's host. False with a reason when there is no memory for it.
  virtual bool render(view_client& client, int columns, int rows, std::string& png,
                      std::string& error) = 0;
};

/// Loads the module from the lib folder beside the program's bin folder. Null with a reason when
/// it is missing or broken. The module stays loaded to the end of the process.
desktop_module* load_desktop_module(std::string& error);

/// What the module exports under this name: a function without arguments that returns the one
/// desktop_module, which the library owns.
inline constexpr char const* desktop_module_symbol = "quirnote_desktop_module";

}  // namespace platform
