#pragma once

#include "platform/appearance.h"

#include <QDBusMessage>
#include <QObject>

#include <optional>

namespace widgets {

/// What the desktop's settings say, through its portal on the session bus; where they say nothing,
/// dark is what has dark windows. The bus isn't touched before it is asked for.
class QtAppearance final : public QObject, public platform::appearance {
  Q_OBJECT

 public:
  bool is_dark() override;

  bool eventFilter(QObject* watched, QEvent* event) override;

 private slots:
  void setting_changed(QDBusMessage const& signal);

 private:
  void start();
  void take(QVariant const& setting);
  bool present() const;
  void tell_if_changed();

  bool started_ = false;
  bool told_ = false;            // what was last answered
  std::optional<bool> setting_;  // nothing if the user has no preference
};

}  // namespace widgets
