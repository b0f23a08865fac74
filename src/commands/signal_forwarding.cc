#include "commands/signal_forwarding.h"

#include <atomic>

namespace commands {
namespace {

constexpr int forwarded[] = {SIGINT, SIGTERM, SIGHUP};
std::atomic<pid_t> group_to_end = 0;
static_assert(std::atomic<pid_t>::is_always_lock_free);

// The signal comes again when this returns, and then does what it does by itself.
extern "C" void end_group_and_self(int signal) {
  if (pid_t const group = group_to_end; group > 0) kill(-group, SIGTERM);
  struct sigaction plain {};
  plain.sa_handler = SIG_DFL;
  sigaction(signal, &plain, nullptr);
  raise(signal);
}

}  // namespace

signal_forwarding::signal_forwarding(pid_t group) {
  group_to_end = group;
  for (int n = 0; n < count; ++n) {
    if (sigaction(forwarded[n], nullptr, &former_[n]) != 0) continue;
    bool const is_plain =
        (former_[n].sa_flags & SA_SIGINFO) == 0 && former_[n].sa_handler == SIG_DFL;
    struct sigaction ours {};
    ours.sa_handler = end_group_and_self;
    is_set_[n] = is_plain && sigaction(forwarded[n], &ours, nullptr) == 0;
  }
}

signal_forwarding::~signal_forwarding() {
  for (int n = 0; n < count; ++n)
    if (is_set_[n]) sigaction(forwarded[n], &former_[n], nullptr);
  group_to_end = 0;
}

}  // namespace commands
