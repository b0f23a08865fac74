#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace widgets {

/// Tells the event loop of the signals by which others end a program: SIGTERM, SIGHUP, SIGINT. What
/// the program was started to ignore (nohup) stays ignored. A signal that comes a second time ends
/// the process at once. One object at a time; main thread only.
class TerminationSignals {
 public:
  /// `on_signal` is called from the event loop. Without file descriptors to spare the signals keep
  /// their effect.
  explicit TerminationSignals(std::function<void()> on_signal);
  ~TerminationSignals();
  TerminationSignals(TerminationSignals const&) = delete;
  TerminationSignals& operator=(TerminationSignals const&) = delete;

 private:
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace widgets
