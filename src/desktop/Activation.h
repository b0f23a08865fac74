#pragma once

#include <QWidget>

#include <string>

namespace widgets {

/// Coming to the front at the wish of a user who is in another program. Desktops let only a window
/// do so that shows the token which that program was given.

/// For the window that is activated next, where Qt shows tokens itself: on Wayland.
void use_activation_token(std::string const& token);

/// Of the window manager, once it knows the window: on X11. A no-op elsewhere.
void ask_for_activation(QWidget& window, std::string const& token);

}  // namespace widgets
