#pragma once

#include "platform/panels/busy_panel.h"

#include <QDialog>
#include <QPointer>

#include <memory>

namespace widgets {

/// The dialog of what takes long. Keys that come to it are meant for what had the focus before.
class BusyPanel final : public QObject, public platform::busy_panel {
 public:
  bool is_wanted() const override { return true; }
  bool handle_events(double seconds) override;
  void show(std::string const& text) override;
  void end() override;

  /// Null as long as it isn't shown.
  QWidget* dialog() const { return dialog_.get(); }
  QWidget* focus_before() const { return focus_before_; }

 private:
  std::unique_ptr<QDialog> dialog_;
  QPointer<QWidget> focus_before_;
  bool cancelled_ = false;
};

}  // namespace widgets
