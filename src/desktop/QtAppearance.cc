#include "desktop/QtAppearance.h"

#include "platform/notification_center.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace widgets {
namespace {

constexpr unsigned prefers_dark = 1, prefers_light = 2;

QString const service = QStringLiteral("org.freedesktop.portal.Desktop");
QString const path = QStringLiteral("/org/freedesktop/portal/desktop");
QString const interface = QStringLiteral("org.freedesktop.portal.Settings");
QString const group_name = QStringLiteral("org.freedesktop.appearance");
QString const key_name = QStringLiteral("color-scheme");

// Portals put the value into a variant of a variant.
QVariant unwrapped(QVariant value) {
  while (value.userType() == qMetaTypeId<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  return value;
}

}  // namespace

bool QtAppearance::is_dark() {
  if (!started_) start();
  return told_ = present();
}

bool QtAppearance::present() const {
  return setting_.value_or(QGuiApplication::palette().color(QPalette::Window).lightness() < 128);
}

// Not waited for: until the answer is there the colour of windows decides.
void QtAppearance::start() {
  started_ = true;
  qGuiApp->installEventFilter(this);
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
              SLOT(setting_changed(QDBusMessage)));
  QDBusMessage read =
      QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  read << group_name << key_name;
  auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    QDBusPendingReply<QDBusVariant> const reply = *answer;
    if (reply.isValid()) take(QVariant::fromValue(reply.value()));
    answer->deleteLater();
  });
}

// Group, key and value.
void QtAppearance::setting_changed(QDBusMessage const& signal) {
  QVariantList const setting = signal.arguments();
  if (setting.size() == 3 && setting[0] == group_name && setting[1] == key_name) take(setting[2]);
}

void QtAppearance::take(QVariant const& setting) {
  unsigned const preference = unwrapped(setting).toUInt();
  setting_.reset();
  if (preference == prefers_dark || preference == prefers_light)
    setting_ = preference == prefers_dark;
  tell_if_changed();
}

bool QtAppearance::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qGuiApp && event->type() == QEvent::ApplicationPaletteChange) tell_if_changed();
  return QObject::eventFilter(watched, event);
}

void QtAppearance::tell_if_changed() {
  if (present() == told_) return;
  told_ = present();
  platform::notification_center::standard().post(did_change, this);
}

}  // namespace widgets
