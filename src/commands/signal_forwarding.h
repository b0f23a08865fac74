#pragma once

#include <signal.h>
#include <sys/types.h>

namespace commands {

/// As long as this lives, SIGINT, SIGTERM and SIGHUP that would end the program end this process
/// group first, which keys of the terminal don't reach. For
/// programs without a window, which don't handle these signals otherwise. One at a time.
class signal_forwarding {
 public:
  explicit signal_forwarding(pid_t group);
  ~signal_forwarding();
  signal_forwarding(signal_forwarding const&) = delete;
  signal_forwarding& operator=(signal_forwarding const&) = delete;

 private:
  static constexpr int count = 3;
  struct sigaction former_[count];
  bool is_set_[count] = {};
};

}  // namespace commands
