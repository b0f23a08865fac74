#include "desktop/ImageStore.h"

#include "desktop/QtText.h"
#include "platform/library_folders.h"

#include <QFile>

#include <map>
#include <string>

namespace widgets {
namespace {

QString images_folder() {
  return QFile::decodeName(platform::shared_support_folder().c_str()) + QLatin1String("/Images/");
}

}  // namespace

QString image_path(QString const& file_name) {
  static QString const folder = images_folder();
  QString const path = folder + file_name;
  return QFile::exists(path) ? path : QString();
}

QImage const& image_named(std::string_view name, double device_pixel_ratio) {
  static std::map<std::string, QImage, std::less<>> images;
  bool const fine = device_pixel_ratio > 1;
  std::string const key = std::string(name) + (fine ? "@2x" : "");
  auto it = images.find(key);
  if (it != images.end()) return it->second;
  QString path = image_path(qstring(key) + QLatin1String(".png"));
  if (path.isEmpty()) path = image_path(qstring(name) + QLatin1String(".png"));
  return images.emplace(key, path.isEmpty() ? QImage() : QImage(path)).first->second;
}

}  // namespace widgets
