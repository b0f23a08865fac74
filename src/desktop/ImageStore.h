#pragma once

#include <QImage>
#include <QString>

#include <string_view>

namespace widgets {

/// The image `name` of the program ("BookmarkFlag"), in the resolution that suits
/// `device_pixel_ratio`; null when there is none of that name. Read once.
QImage const& image_named(std::string_view name, double device_pixel_ratio);

/// The file of an image; empty when there is none.
QString image_path(QString const& file_name);

}  // namespace widgets
