#pragma once

#include <QWidget>

namespace widgets {

/// Has a screen reader say what the user has to see at once, wherever the focus is: a search
/// that found nothing, the selected completion. Nothing happens as long as none listens.
void announce(QWidget& window_part, QString const& text);

/// Has the parts of the program's windows that paint themselves speak to assistive programs.
void install_accessible_parts();

}  // namespace widgets
