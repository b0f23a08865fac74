#include "desktop/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace widgets {
namespace {

constexpr int handled[] = {SIGTERM, SIGHUP, SIGINT};
volatile std::sig_atomic_t write_end = -1;

// All that a handler may do is to leave a note.
extern "C" void note_signal(int) {
  int const error = errno;
  [[maybe_unused]] ssize_t const written = ::write(write_end, "", 1);
  errno = error;
}

void replace_action(int number, void (*from)(int), void (*to)(int), int flags) {
  struct sigaction action = {};
  if (sigaction(number, nullptr, &action) != 0 || action.sa_handler != from) return;
  action = {};
  action.sa_handler = to;
  action.sa_flags = flags;
  sigaction(number, &action, nullptr);
}

}  // namespace

TerminationSignals::TerminationSignals(std::function<void()> on_signal) {
  if (::pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0) return;
  write_end = pipe_[1];
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this, on_signal = std::move(on_signal)] {
                     char note;
                     if (::read(pipe_[0], &note, 1) == 1) on_signal();
                   });
  for (int const number : handled)
    replace_action(number, SIG_DFL, note_signal, SA_RESTART | SA_RESETHAND);
}

TerminationSignals::~TerminationSignals() {
  if (notifier_ == nullptr) return;
  for (int const number : handled) replace_action(number, note_signal, SIG_DFL, 0);
  notifier_.reset();
  ::close(pipe_[0]);
  ::close(pipe_[1]);
}

}  // namespace widgets
