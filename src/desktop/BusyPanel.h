#pragma once

#include "platform/busy_panel.h"

#include <QDialog>
#include <QLabel>

#include <memory>

namespace widgets {

/// Lets events through while something takes long, but no input save for Escape and its own button.
class BusyPanel final : public QObject, public platform::busy_panel {
 public:
  bool is_wanted() const override { return true; }
  bool handle_events(double seconds) override;
  void show(std::string const& text) override;
  void end() override;

 protected:
  bool eventFilter(QObject* target, QEvent* event) override;

 private:
  bool is_own(QObject const* target) const;

  std::unique_ptr<QDialog> dialog_;
  bool filtering_ = false, cancelled_ = false;
};

}  // namespace widgets
