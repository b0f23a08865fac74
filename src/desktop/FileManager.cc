#include "desktop/FileManager.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDesktopServices>
#include <QStringList>
#include <QUrl>

namespace widgets {
namespace {

QByteArray url_of(std::string const& path) {
  return "file://" + QByteArray::fromStdString(path).toPercentEncoding("/");
}

void open_folder_of(std::string const& path) {
  QDesktopServices::openUrl(QUrl::fromEncoded(url_of(path.substr(0, path.rfind('/') + 1))));
}

}  // namespace

void show_in_file_manager(std::vector<std::string> const& paths) {
  if (paths.empty()) return;
  QStringList urls;
  for (std::string const& path : paths) urls << QString::fromLatin1(url_of(path));
  QDBusMessage call = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"),
      QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  call << urls << QString();
  QDBusConnection const bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return open_folder_of(paths.front());
  auto* const watcher = new QDBusPendingCallWatcher(bus.asyncCall(call));
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                   [watcher, first = paths.front()] {
                     if (QDBusPendingReply<>(*watcher).isError()) open_folder_of(first);
                     watcher->deleteLater();
                   });
}

}  // namespace widgets
