#include "desktop/ImageStore.h"

#include "desktop/QtText.h"
#include "platform/system/library_folders.h"

#include <QFile>
#include <QImageReader>

#include <map>
#include <string>

namespace widgets {
namespace {

QString images_folder() {
  return QFile::decodeName(platform::shared_support_folder().c_str()) + QLatin1String("/Images/");
}

// Told the format, Qt leaves its plugins for other ones alone.
QImage read_image(std::string const& name) {
  static QString const folder = images_folder();
  QImageReader reader(folder + qstring(name) + QLatin1String(".png"), "png");
  reader.setAutoDetectImageFormat(false);
  return reader.read();
}

}  // namespace

QImage const& image_named(std::string_view name, double device_pixel_ratio) {
  static std::map<std::string, QImage, std::less<>> images;
  std::string const key = std::string(name) + (device_pixel_ratio > 1 ? "@2x" : "");
  auto it = images.find(key);
  if (it != images.end()) return it->second;
  QImage image = read_image(key);
  if (image.isNull()) image = read_image(std::string(name));
  return images.emplace(key, std::move(image)).first->second;
}

}  // namespace widgets
