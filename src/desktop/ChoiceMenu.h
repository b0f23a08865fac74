#pragma once

#include "platform/menu.h"

#include <QPoint>

#include <cstddef>
#include <optional>
#include <vector>

class QWidget;

namespace widgets {

/// Shows the items at a place on screen, in letters of so many points, and returns the number of
/// the one that is chosen, by mouse, arrows or the digit that is its key. Handles events meanwhile;
/// Escape ends it without a choice.
std::optional<std::size_t> run_choice_menu(std::vector<platform::menu_item> const& items,
                                           QPoint global, double font_size, QWidget* parent);

}  // namespace widgets
