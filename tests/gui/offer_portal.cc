// offer_portal SCHEME: the desktop's settings on the session bus, with this colour scheme: 0 for
// none, 1 for dark, 2 for light. Each line of its input is the next one. Ends with its input.

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
    bus.send(message.createReply(QVariant::fromValue(QDBusVariant(value()))));
    return true;
  }
  void change(unsigned scheme, QDBusConnection const& bus) {
    scheme_ = scheme;
    bus.send(QDBusMessage::createSignal(path, interface, QStringLiteral("SettingChanged"))
             << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
             << value());
  }

 private:
  QVariant value() const { return QVariant::fromValue(QDBusVariant(QVariant(scheme_))); }

  unsigned scheme_;
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
    offered.change(static_cast<unsigned>(std::stoul(line)), bus);
  });
  return QCoreApplication::exec();
}
