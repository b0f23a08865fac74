#pragma once

#include "platform/appearance.h"

#include <QDBusMessage>
#include <QObject>

#include <optional>

namespace widgets {

/// What the desktop's settings say, through its portal on the session bus; where they say nothing
/// it is light. The bus isn't touched before it is asked for.
class QtAppearance final : public QObject, public platform::appearance {
  Q_OBJECT

 public:
  bool is_dark() override;
  bool wants_contrast() override;
  void fit_windows_to(bool dark) override;

 private slots:
  void setting_changed(QDBusMessage const& signal);

 private:
  void start();
  void ask();
  void ask_for(QString const& key);
  void take(QString const& key, QVariant const& setting);
  void answered();
  void tell_change();
  bool present() const;

  bool is_started_ = false, is_answered_ = false;
  bool was_dark_ = false;  // windows, before this program changed that
  bool told_ = false;      // what was last said
  bool wants_contrast_ = false, told_contrast_ = false, shows_contrast_ = false;
  std::optional<bool> setting_;  // nothing if the user has no preference
};

}  // namespace widgets
