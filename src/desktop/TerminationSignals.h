#pragma once

#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace widgets {

/// Tells the event loop of the signals by which others end a program: SIGTERM, SIGHUP, SIGINT. What
/// the program was started to ignore (nohup) stays ignored. One object at a time; main thread only.
///
/// They often come in a row: a terminal that is closed sends SIGHUP, and its shell sends it again.
/// So further ones count for nothing once the loop has received the first, as texts are being
/// kept then. If it has not been told for three seconds it seems to hang, and they end the process.
class TerminationSignals {
 public:
  /// `on_signal` is called from the event loop. Without file descriptors to spare the signals keep
  /// their effect.
  explicit TerminationSignals(std::function<void()> on_signal);
  ~TerminationSignals();
  TerminationSignals(TerminationSignals const&) = delete;
  TerminationSignals& operator=(TerminationSignals const&) = delete;

  /// From now on no signal ends the process, which is about to end by itself.
  static void hold();

 private:
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace widgets
