#include "commands/shell.h"

#include "commands/child_process.h"
#include "platform/desktop.h"

#include <poll.h>

#include <cerrno>
#include <chrono>
#include <optional>

namespace commands {
namespace {

using clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto silent_wait = 30ms;  // most fragments have ended by then
constexpr auto wait_before_show = 1000ms;
constexpr int poll_period = 10;         // milliseconds
constexpr double events_period = 0.01;  // seconds

/// One command under way.
class running_command {
 public:
  running_command(child_process& process, std::string const& text)
      : process_(process), text_(text) {
    if (text_.empty()) process_.input().close();
  }

  /// A process may go on when it has closed its output.
  bool is_done() { return !process_.output().is_open() && process_.has_ended(); }
  std::string& output() { return received_; }

  /// Moves what can be moved, waiting for at most so many milliseconds.
  void exchange(int milliseconds) {
    if (!process_.output().is_open()) {
      poll(nullptr, 0, milliseconds);
      return;
    }
    pollfd ready[2] = {{process_.output().get(), POLLIN, 0}, {process_.input().get(), POLLOUT, 0}};
    if (poll(ready, process_.input().is_open() ? 2 : 1, milliseconds) <= 0) return;
    if (ready[0].revents != 0) receive();
    if (process_.input().is_open() && ready[1].revents != 0) send();
  }

  /// To be called again and again until it is done.
  void end_group() {
    process_.terminate();
    if (process_.is_killed()) process_.output().close();
  }

 private:
  void receive() {
    char buffer[1 << 16];
    ssize_t const count = read(process_.output().get(), buffer, sizeof buffer);
    if (count > 0) received_.append(buffer, static_cast<std::size_t>(count));
    bool const is_later = count < 0 && (errno == EINTR || errno == EAGAIN);
    if (count <= 0 && !is_later) process_.output().close();
  }
  // Who has stopped reading doesn't get the rest. SIGPIPE is ignored by the program.
  void send() {
    ssize_t const count = write(process_.input().get(), text_.data() + sent_, text_.size() - sent_);
    if (count > 0) sent_ += static_cast<std::size_t>(count);
    bool const is_later = count < 0 && (errno == EINTR || errno == EAGAIN);
    if (sent_ == text_.size() || (count < 0 && !is_later)) process_.input().close();
  }

  child_process& process_;
  std::string const& text_;
  std::size_t sent_ = 0;
  std::string received_;
};

bool is_too_much(running_command& command, shell_result& result) {
  if (command.output().size() <= most_output) return false;
  result.error = "it has written more than " + std::to_string(most_output >> 20) + " MB";
  return true;
}

void read_to_end(running_command& command, shell_result& result) {
  auto const begun = clock::now();
  while (!command.is_done() && clock::now() < begun + silent_wait) command.exchange(poll_period);
  if (command.is_done()) return;
  platform::desktop* const desktop = platform::desktop::current_or_null();
  bool const is_shown = desktop != nullptr && desktop->busy().is_wanted();
  std::optional<platform::waiting::scope> scope;
  if (is_shown) scope.emplace(desktop->waits(), [&] { result.cancelled = true; });
  bool has_panel = false;
  while (!command.is_done()) {
    command.exchange(is_shown ? 0 : poll_period);
    if (is_shown && !has_panel && clock::now() >= begun + wait_before_show) {
      has_panel = true;
      desktop->busy().show("Running a command\u2026");
    }
    if (is_shown && desktop->busy().handle_events(events_period)) result.cancelled = true;
    if (result.cancelled || is_too_much(command, result)) command.end_group();
  }
  if (is_shown) desktop->busy().end();
}

shell_result failure(std::string error) {
  shell_result result;
  result.status = -1;
  result.error = std::move(error);
  return result;
}

}  // namespace

shell_result run_shell(shell_request const& request) {
  std::string error;
  auto const process = child_process::start({.script = request.script,
                                             .environment = request.environment,
                                             .directory = request.directory},
                                            error);
  if (process == nullptr) return failure(std::move(error));
  shell_result result;
  running_command command(*process, request.input);
  read_to_end(command, result);
  result.status = process->exit_status();
  result.output = std::move(command.output());
  return result;
}

}  // namespace commands
