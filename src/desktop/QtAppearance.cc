#include "desktop/QtAppearance.h"

#include "platform/notification_center.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QPalette>
#include <QTimer>

namespace widgets {
namespace {

constexpr unsigned prefers_dark = 1, prefers_light = 2;  // 0 is no preference

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

// Text and ground of each part, of which Qt derives what isn't named.
QPalette dark_palette() {
  QPalette palette(QColor(0x3A, 0x3C, 0x40), QColor(0x2B, 0x2D, 0x30));
  QColor const text(0xDC, 0xDE, 0xE2), dimmed(0x80, 0x84, 0x8A);
  for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                          QPalette::ToolTipText, QPalette::BrightText}) {
    palette.setColor(role, text);
    palette.setColor(QPalette::Disabled, role, dimmed);
  }
  palette.setColor(QPalette::Base, QColor(0x1F, 0x21, 0x24));
  palette.setColor(QPalette::AlternateBase, QColor(0x26, 0x28, 0x2B));
  palette.setColor(QPalette::ToolTipBase, QColor(0x3A, 0x3C, 0x40));
  palette.setColor(QPalette::PlaceholderText, dimmed);
  palette.setColor(QPalette::Highlight, QColor(0x2F, 0x65, 0xCA));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x4A, 0x4D, 0x52));
  palette.setColor(QPalette::Link, QColor(0x6C, 0xA8, 0xFF));
  palette.setColor(QPalette::LinkVisited, QColor(0xB3, 0x9D, 0xFF));
  return palette;
}

QPalette light_palette() {
  QPalette palette(QColor(0xEF, 0xEF, 0xEF), QColor(0xF4, 0xF4, 0xF4));
  palette.setColor(QPalette::Base, Qt::white);
  palette.setColor(QPalette::AlternateBase, QColor(0xF5, 0xF5, 0xF5));
  palette.setColor(QPalette::Highlight, QColor(0x30, 0x8C, 0xC6));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

bool is_dark_palette() {
  return QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

}  // namespace

bool QtAppearance::is_dark() {
  if (!is_started_) start();
  return told_ = present();
}

// Until the answer is there the colour of windows is the best guess.
bool QtAppearance::present() const {
  return is_answered_ ? setting_.value_or(false) : was_dark_;
}

// At the loop's next turn, since the first window needn't wait for the bus.
void QtAppearance::start() {
  is_started_ = true;
  was_dark_ = is_dark_palette();
  QTimer::singleShot(0, this, [this] { ask(); });
}

void QtAppearance::ask() {
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return answered();
  bus.connect(QString(), path, interface, QStringLiteral("SettingChanged"), this,
              SLOT(setting_changed(QDBusMessage)));
  QDBusMessage read =
      QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  read << group_name << key_name;
  auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(read), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    QDBusPendingReply<QDBusVariant> const reply = *answer;
    if (reply.isValid())
      take(QVariant::fromValue(reply.value()));
    else
      answered();
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
  answered();
}

void QtAppearance::answered() {
  is_answered_ = true;
  if (present() == told_) return;
  told_ = present();
  platform::notification_center::standard().post(did_change, this);
}

// The desktop's own colours stay where they fit.
void QtAppearance::fit_windows_to(bool dark) {
  if (dark == is_dark_palette()) return;
  QApplication::setPalette(QPalette());
  if (dark != is_dark_palette()) QApplication::setPalette(dark ? dark_palette() : light_palette());
}

}  // namespace widgets
