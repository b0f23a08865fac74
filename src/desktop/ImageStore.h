#pragma once

#include <QImage>

#include <string_view>

namespace widgets {

/// The image `name` of the program ("BookmarkFlag"), in the resolution that suits
/// `device_pixel_ratio`; null when there is none of that name. Read once.
QImage const& image_named(std::string_view name, double device_pixel_ratio);

}  // namespace widgets
