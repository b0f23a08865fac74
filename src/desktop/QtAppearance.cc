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
QString const scheme_key = QStringLiteral("color-scheme");
QString const contrast_key = QStringLiteral("contrast");  // 1 is high

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

// Nothing but black and white, and a selection that no line can be taken for.
QPalette contrast_palette(bool dark) {
  QColor const ground = dark ? Qt::black : Qt::white, text = dark ? Qt::white : Qt::black;
  QPalette palette(text, ground, text, text, text, text, text, ground, ground);
  QColor const dimmed = dark ? QColor(0xC0, 0xC0, 0xC0) : QColor(0x40, 0x40, 0x40);
  for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, dimmed);
  palette.setColor(QPalette::Button, ground);
  palette.setColor(QPalette::AlternateBase, ground);
  palette.setColor(QPalette::ToolTipBase, ground);
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::PlaceholderText, dimmed);
  palette.setColor(QPalette::Highlight, dark ? QColor(0xFF, 0xE0, 0x00) : QColor(0x00, 0x20, 0x80));
  palette.setColor(QPalette::HighlightedText, ground);
  palette.setColor(QPalette::Link, dark ? QColor(0x80, 0xC0, 0xFF) : QColor(0x00, 0x20, 0xA0));
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

bool QtAppearance::wants_contrast() {
  if (!is_started_) start();
  return told_contrast_ = wants_contrast_;
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
  ask_for(scheme_key);
  ask_for(contrast_key);
}

void QtAppearance::ask_for(QString const& key) {
  QDBusMessage read =
      QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  read << group_name << key;
  QDBusPendingCall const call = QDBusConnection::sessionBus().asyncCall(read);
  auto* const answer = new QDBusPendingCallWatcher(call, this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, key] {
    QDBusPendingReply<QDBusVariant> const reply = *answer;
    if (reply.isValid())
      take(key, QVariant::fromValue(reply.value()));
    else if (key == scheme_key)
      answered();
    answer->deleteLater();
  });
}

// Group, key and value.
void QtAppearance::setting_changed(QDBusMessage const& signal) {
  QVariantList const setting = signal.arguments();
  if (setting.size() == 3 && setting[0] == group_name) take(setting[1].toString(), setting[2]);
}

void QtAppearance::take(QString const& key, QVariant const& setting) {
  unsigned const preference = unwrapped(setting).toUInt();
  if (key == contrast_key) {
    wants_contrast_ = preference == 1;
    return tell_change();
  }
  if (key != scheme_key) return;
  setting_.reset();
  if (preference == prefers_dark || preference == prefers_light)
    setting_ = preference == prefers_dark;
  answered();
}

void QtAppearance::answered() {
  is_answered_ = true;
  tell_change();
}

void QtAppearance::tell_change() {
  if (present() == told_ && wants_contrast_ == told_contrast_) return;
  told_ = present();
  told_contrast_ = wants_contrast_;
  platform::notification_center::standard().post(did_change, this);
}

// The desktop's own colours stay where they fit.
void QtAppearance::fit_windows_to(bool dark) {
  if (dark == is_dark_palette() && wants_contrast_ == shows_contrast_) return;
  shows_contrast_ = wants_contrast_;
  if (shows_contrast_) return QApplication::setPalette(contrast_palette(dark));
  QApplication::setPalette(QPalette());
  if (dark != is_dark_palette()) QApplication::setPalette(dark ? dark_palette() : light_palette());
}

}  // namespace widgets
