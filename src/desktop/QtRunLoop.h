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
  void run_for(double seconds) override;

 private:
  QObject main_thread_;
};

}  // namespace widgets
