#pragma once

#include "platform/view.h"

#include <string>

namespace widgets {

/// Paints `client` at `columns` times `rows` cells, without a display: the bytes of a PNG file.
/// False with a reason when there is no memory for it.
bool render_picture(platform::view_client& client, int columns, int rows, std::string& png,
                    std::string& error);

}  // namespace widgets
