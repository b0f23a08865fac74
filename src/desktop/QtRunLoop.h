#pragma once

#include "platform/run_loop.h"

#include <QObject>

namespace widgets {

/// The run loop on Qt's event loop.
class QtRunLoop final : public platform::run_loop {
 public:
  void post(std::function<void()> task) override;
  std::unique_ptr<platform::timer> schedule(double seconds, bool repeats,
                                            std::function<void()> task) override;
  std::unique_ptr<platform::descriptor_watch> watch_descriptor(int descriptor,
                                                               std::function<void()> task) override;
  double now() const override;
  /// Keys and mouse events stay queued meanwhile, so that the logic is not entered anew by the
  /// user while it waits for something.
  void run_for(double seconds) override;

  /// Whether run_for() is being executed.
  bool is_waiting() const { return waiting_ != 0; }

 private:
  void wait_for_events(double seconds);

  int waiting_ = 0;
  QObject main_thread_;
};

}  // namespace widgets
