#include "desktop/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace widgets {
namespace {

constexpr int handled[] = {SIGTERM, SIGHUP, SIGINT};
constexpr int patience = 3;  // seconds

volatile std::sig_atomic_t write_end = -1;
volatile std::sig_atomic_t first_came = 0;  // in seconds, by a clock that begins at 1; or 0
volatile std::sig_atomic_t ends_in_order = 0;

int seconds_now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<int>(now.tv_sec) + 1;
}

// All that a handler may do is to leave a note, and to end the process.
extern "C" void note_signal(int number) {
  int const error = errno;
  int const now = seconds_now();
  if (first_came == 0) {
    first_came = now;
    [[maybe_unused]] ssize_t const written = ::write(write_end, "", 1);
  } else if (!ends_in_order && now - first_came > patience) {
    std::signal(number, SIG_DFL);
    std::raise(number);
  }
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
  first_came = 0;
  ends_in_order = 0;
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this, on_signal = std::move(on_signal)] {
                     char note;
                     if (::read(pipe_[0], &note, 1) != 1) return;
                     hold();
                     on_signal();
                   });
  for (int const number : handled) replace_action(number, SIG_DFL, note_signal, SA_RESTART);
}

void TerminationSignals::hold() {
  ends_in_order = 1;
}

TerminationSignals::~TerminationSignals() {
  if (notifier_ == nullptr) return;
  // What comes after the first signal may still come, while the program is at its end.
  ends_in_order = 0;
  if (first_came == 0)
    for (int const number : handled) replace_action(number, note_signal, SIG_DFL, 0);
  notifier_.reset();
  ::close(pipe_[0]);
  ::close(pipe_[1]);
}

}  // namespace widgets
