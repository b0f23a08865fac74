#pragma once

#include "platform/view.h"

#include <string>

namespace widgets {

/// Paints `client` at `columns` times `rows` cells into a PNG file, without a display. False with
/// a reason when the file can't be written.
bool render_picture(platform::view_client& client, int columns, int rows, std::string const& path,
                    std::string& error);

}  // namespace widgets
