// offer_portal SCHEME: the desktop's settings on the session bus, with this colour scheme: 0 for
// none, 1 for dark, 2 for light, and no wish for high contrast. Each line of its input is the next
// scheme, or after a "c" the next contrast, of which 1 is high. Ends with its input.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QSocketNotifier>

#include <iostream>
#include <string>

namespace {

QString const path = QStringLiteral("/org/freedesktop/portal/desktop");
QString const interface = QStringLiteral("org.freedesktop.portal.Settings");

class settings final : public QDBusVirtualObject {
 public:
  explicit settings(unsigned scheme) : scheme_(scheme) {}

  QString introspect(QString const&) const override { return {}; }
  bool handleMessage(QDBusMessage const& message, QDBusConnection const& bus) override {
    if (message.member() != QLatin1String("Read")) return false;
    // A variant in a variant, as portals have it.
    bool const is_contrast = message.arguments().value(1) == QStringLiteral("contrast");
    bus.send(message.createReply(
        QVariant::fromValue(QDBusVariant(value(is_contrast ? contrast_ : scheme_)))));
    return true;
  }
  void change(std::string const& line, QDBusConnection const& bus) {
    bool const is_contrast = line[0] == 'c';
    unsigned& changed = is_contrast ? contrast_ : scheme_;
    changed = static_cast<unsigned>(std::stoul(line.substr(is_contrast ? 1 : 0)));
    bus.send(QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"))
             << QStringLiteral("org.freedesktop.appearance")
             << (is_contrast ? QStringLiteral("contrast") : QStringLiteral("color-scheme"))
             << value(changed));
  }

 private:
  static QVariant value(unsigned setting) {
    return QVariant::fromValue(QDBusVariant(QVariant(setting)));
  }

  unsigned scheme_, contrast_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication const app(argc, argv);
  QDBusConnection bus = QDBusConnection::sessionBus();
  settings offered(static_cast<unsigned>(std::stoul(argv[1])));
  if (!bus.registerVirtualObject(path, &offered) ||
      !bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")))
    return 1;
  QSocketNotifier const input(0, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
    std::string line;
    if (!std::getline(std::cin, line)) return QCoreApplication::quit();
    offered.change(line, bus);
  });
  return QCoreApplication::exec();
}
