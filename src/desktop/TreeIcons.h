#pragma once

#include "platform/tree/tree_panel.h"

#include <QColor>
#include <QPainter>

namespace widgets {

/// Draws the icon of a row within the area, in a tint that can be seen beside text of this colour.
/// A link has an arrow. Without a tint it has the colour of the text.
void draw_tree_icon(QPainter& painter, QRectF const& area, platform::tree_row const& row,
                    QColor const& text, bool is_tinted);
/// What opens and closes a row.
void draw_tree_arrow(QPainter& painter, QRectF const& area, bool is_open, QColor const& color);

}  // namespace widgets
