#include "commands/shell.h"

#include "commands/child_process.h"
#include "commands/signal_forwarding.h"
#include "platform/desktop.h"
#include "settings/store.h"

#include <poll.h>
#include <signal.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>

namespace commands {
namespace {

using clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto silent_wait = 30ms;  // most fragments have ended by then
constexpr auto wait_before_show = 1000ms;
constexpr auto between_events = 10ms;
constexpr int poll_period = 10;  // milliseconds
constexpr std::size_t room = std::size_t{1} << 18;

/// What is written for a command that doesn't read it is no reason to end.
class sigpipe_ignored {
 public:
  sigpipe_ignored() {
    struct sigaction ignored {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignored, &former_);
  }
  ~sigpipe_ignored() { sigaction(SIGPIPE, &former_, nullptr); }
  sigpipe_ignored(sigpipe_ignored const&) = delete;
  sigpipe_ignored& operator=(sigpipe_ignored const&) = delete;

 private:
  struct sigaction former_ {};
};

/// Moves what goes through the pipes of one command.
class exchange {
 public:
  exchange(child_process& process, input_source const& source, output_sink const& sink)
      : process_(process), source_(source), sink_(sink), buffer_(new char[room]) {
    take_input();
  }

  /// A process may go on when it has closed its output.
  bool is_done() { return !process_.output().is_open() && process_.has_ended(); }
  std::size_t sent() const { return sent_; }
  std::size_t received() const { return received_; }
  void drop_output() { is_dropped_ = true; }

  /// Moves what can be moved, waiting for at most so many milliseconds.
  void move(int milliseconds) {
    if (!process_.output().is_open()) {
      process_.wait_for_end(milliseconds);
      return;
    }
    pollfd ready[2] = {{process_.output().get(), POLLIN, 0}, {process_.input().get(), POLLOUT, 0}};
    if (poll(ready, process_.input().is_open() ? 2 : 1, milliseconds) <= 0) return;
    if (ready[0].revents != 0) receive();
    if (process_.input().is_open() && ready[1].revents != 0) send();
  }

 private:
  void receive() {
    ssize_t const count = read(process_.output().get(), buffer_.get(), room);
    if (count > 0) {
      received_ += static_cast<std::size_t>(count);
      if (!is_dropped_) sink_({buffer_.get(), static_cast<std::size_t>(count)});
    }
    bool const is_later = count < 0 && (errno == EINTR || errno == EAGAIN);
    if (count <= 0 && !is_later) process_.output().close();
  }

  void take_input() {
    left_ = source_();
    if (left_.empty()) process_.input().close();
  }

  // Who has stopped reading doesn't get the rest.
  void send() {
    ssize_t const count = write(process_.input().get(), left_.data(), left_.size());
    if (count > 0) {
      sent_ += static_cast<std::size_t>(count);
      left_.remove_prefix(static_cast<std::size_t>(count));
      if (left_.empty()) take_input();
    } else if (count < 0 && errno != EINTR && errno != EAGAIN) {
      process_.input().close();
    }
  }

  child_process& process_;
  input_source const& source_;
  output_sink const& sink_;
  std::unique_ptr<char[]> buffer_;
  std::string_view left_;
  std::size_t sent_ = 0, received_ = 0;
  bool is_dropped_ = false;
};

std::string megabytes(std::size_t bytes) {
  return std::to_string(bytes >> 20) + " MB";
}

/// Waits for one command, and ends it where it is to end.
class patience {
 public:
  patience(child_process& process, exchange& data)
      : process_(process),
        data_(data),
        most_(static_cast<std::size_t>(settings::store().integer(most_output_key)) << 20) {}

  void wait() {
    platform::desktop* const desktop = platform::desktop::current_or_null();
    bool const has_events = desktop != nullptr && desktop->busy().is_wanted();
    // From the start: a signal during the silent wait must end the command, too.
    std::optional<signal_forwarding> forwarding;
    if (!has_events) forwarding.emplace(process_.id());
    while (!data_.is_done() && clock::now() < begun_ + silent_wait) move(poll_period);
    if (!data_.is_done() && has_events) wait_with_events(*desktop);
    while (!data_.is_done()) move(poll_period);
  }
  bool was_cancelled() const { return was_cancelled_; }
  std::string take_error() { return std::move(error_); }

 private:
  void move(int milliseconds) {
    data_.move(milliseconds);
    if (is_ending_)
      end();
    else if (data_.received() > std::max(most_, 2 * data_.sent()))
      ask_for_more();
  }

  void wait_with_events(platform::desktop& desktop) {
    platform::waiting::scope const scope(
        desktop.waits(), [this] { is_asked_ = true; }, platform::waiting::kind::program);
    struct panel {
      platform::busy_panel& shown;
      ~panel() { shown.end(); }
    } const panel{desktop.busy()};
    while (!data_.is_done()) {
      auto const until = clock::now() + between_events;
      do move(poll_period);
      while (!data_.is_done() && clock::now() < until);
      if (!has_panel_ && clock::now() >= begun_ + wait_before_show) show(desktop);
      if (desktop.busy().handle_events(0)) cancel();
      if (std::exchange(is_asked_, false)) ask_whether_to_end(desktop);
    }
  }

  void show(platform::desktop& desktop) {
    has_panel_ = true;
    desktop.busy().show("Running a command\u2026");
  }

  void hide(platform::desktop& desktop) {
    desktop.busy().end();
    has_panel_ = false;
  }

  void cancel() { was_cancelled_ = is_ending_ = true; }

  void ask_whether_to_end(platform::desktop& desktop) {
    if (is_ending_) return;
    if (desktop.waits().is_ending()) return cancel();
    hide(desktop);
    platform::alert const question{"Stop Command Execution",
                                   "Would you like to kill the current shell command?",
                                   {"Kill Command", "Cancel"},
                                   1};
    if (desktop.alerts().run(question) == 0 || desktop.waits().is_ending()) cancel();
  }

  void ask_for_more() {
    platform::desktop* const desktop = platform::desktop::current_or_null();
    if (desktop != nullptr) hide(*desktop);
    platform::alert const question{"Large Command Output",
                                   "The command has written " + megabytes(data_.received()) +
                                       " so far. Do you want to take more of it?",
                                   {"Kill Command", "Take More"},
                                   0};
    if (desktop != nullptr && desktop->alerts().run(question) == 1) {
      most_ = 2 * data_.received();
      return;
    }
    error_ = "it has written more than " + megabytes(most_);
    is_ending_ = true;
    data_.drop_output();
  }

  // While the program ends nobody is left to wait for long.
  void end() {
    platform::desktop* const desktop = platform::desktop::current_or_null();
    bool const is_urgent = desktop != nullptr && desktop->waits().is_ending();
    process_.terminate(is_urgent ? 200ms : child_process::between_signals);
    // What has left the group may hold the pipe for ever.
    if (process_.is_killed()) process_.output().close();
  }

  child_process& process_;
  exchange& data_;
  std::size_t most_;
  clock::time_point const begun_ = clock::now();
  bool is_asked_ = false, is_ending_ = false, was_cancelled_ = false, has_panel_ = false;
  std::string error_;
};

}  // namespace

shell_result run_shell(shell_request const& request, input_source const& source,
                       output_sink const& sink) {
  shell_result result;
  auto const process = child_process::start({.script = request.script,
                                             .environment = request.environment,
                                             .directory = request.directory},
                                            result.error);
  if (process == nullptr) {
    result.status = -1;
    return result;
  }
  sigpipe_ignored const ignored;
  exchange data(*process, source, sink);
  patience waiting(*process, data);
  waiting.wait();
  result.status = process->exit_status();
  result.cancelled = waiting.was_cancelled();
  result.error = waiting.take_error();
  return result;
}

shell_result run_shell(shell_request const& request) {
  std::string output;
  shell_result result = run_shell(request, source_of(request.input),
                                  [&](std::string_view piece) { output += piece; });
  result.output = std::move(output);
  return result;
}

input_source source_of(std::string const& text) {
  return [rest = std::string_view(text)]() mutable { return std::exchange(rest, {}); };
}

}  // namespace commands
