#include "commands/shell.h"

#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/utf.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

namespace commands {
namespace {

using clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr auto silent_wait = 30ms;  // most fragments have ended by then
constexpr auto wait_before_show = 1000ms;
constexpr auto between_signals = 2s;
constexpr int poll_period = 10;         // milliseconds
constexpr double events_period = 0.01;  // seconds
// Bytes of one string that the kernel takes; a variable has a name and a "=", and all have an end.
constexpr std::size_t longest_string = 0x20000;

class descriptor {
 public:
  descriptor() = default;
  explicit descriptor(int number) : number_(number) {}
  descriptor(descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  descriptor& operator=(descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~descriptor() { close(); }
  int get() const { return number_; }
  void close() {
    if (number_ >= 0) ::close(std::exchange(number_, -1));
  }

 private:
  int number_ = -1;
};

struct pipe_ends {
  descriptor read, write;
};

std::optional<pipe_ends> make_pipe() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
  return pipe_ends{descriptor(ends[0]), descriptor(ends[1])};
}

/// "NAME=VALUE" each: the first of a name wins.
std::vector<std::string> environment_of(variables const& given) {
  variables all{{"QN_PID", std::to_string(getpid())}, {"SHLVL", "1"}};
  for (auto const& [name, value] : given) {
    bool const is_text = !name.empty() && name.find('=') == name.npos &&
                         name.find('\0') == name.npos && value.find('\0') == value.npos;
    if (!is_text) {
      platform::beep();
      platform::log_text(
          "Quirnote: *** string conversion error while getting the UTF-8 version of an environment "
          "variable\n");
    } else if (name.size() + value.size() + 2 > longest_string) {
      platform::log_text("Quirnote: *** variable exceeds ARG_MAX: " + name + "\n");
    } else {
      all.emplace(name, value);
    }
  }
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    std::string_view const text = *entry;
    auto const equals = text.find('=');
    if (equals == text.npos || text.starts_with("QN_")) continue;
    all.emplace(text.substr(0, equals), text.substr(equals + 1));
  }
  std::vector<std::string> result;
  for (auto const& [name, value] : all) result.push_back(name + "=" + value);
  return result;
}

/// A script on disk for as long as it runs, for one that names its interpreter.
class script_file {
 public:
  /// False, with errno, when it can't be written.
  bool write(std::string const& script) {
    descriptor const file(mkostemp(name_, O_CLOEXEC));
    if (file.get() < 0) return false;
    exists_ = true;
    for (std::size_t done = 0; done < script.size();) {
      ssize_t const count = ::write(file.get(), script.data() + done, script.size() - done);
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    return fchmod(file.get(), 0700) == 0;
  }
  ~script_file() {
    if (exists_) unlink(name_);
  }
  char const* name() const { return name_; }

 private:
  char name_[64] = "/tmp/temp_quirnote.XXXXXX";
  bool exists_ = false;
};

std::vector<char*> pointers_to(std::vector<std::string> const& strings) {
  std::vector<char*> result;
  for (auto const& each : strings) result.push_back(const_cast<char*>(each.c_str()));
  result.push_back(nullptr);
  return result;
}

/// 0 or an errno.
int spawn(pid_t& process, std::vector<std::string> const& arguments,
          std::vector<std::string> const& environment, std::string const& directory, int input,
          int output) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&files, directory.c_str());
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
  sigset_t none, restored;
  sigemptyset(&none);
  sigemptyset(&restored);
  for (int const signal : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&restored, signal);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &restored);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  int const error = posix_spawn(&process, arguments[0].c_str(), &files, &attributes,
                                pointers_to(arguments).data(), pointers_to(environment).data());
  posix_spawn_file_actions_destroy(&files);
  posix_spawnattr_destroy(&attributes);
  return error;
}

/// One command under way.
class running_command {
 public:
  running_command(pid_t process, descriptor input, descriptor output, std::string const& text)
      : process_(process), input_(std::move(input)), output_(std::move(output)), text_(text) {
    fcntl(input_.get(), F_SETFL, O_NONBLOCK);
    fcntl(output_.get(), F_SETFL, O_NONBLOCK);
    if (text_.empty()) input_.close();
  }

  /// A process may go on when it has closed its output.
  bool is_done() { return output_.get() < 0 && has_ended(); }
  std::string& output() { return received_; }

  /// Moves what can be moved, waiting for at most so many milliseconds.
  void exchange(int milliseconds) {
    if (output_.get() < 0) {
      poll(nullptr, 0, milliseconds);
      return;
    }
    pollfd ready[2] = {{output_.get(), POLLIN, 0}, {input_.get(), POLLOUT, 0}};
    if (poll(ready, input_.get() < 0 ? 1 : 2, milliseconds) <= 0) return;
    if (ready[0].revents != 0) receive();
    if (input_.get() >= 0 && ready[1].revents != 0) send();
  }

  /// Each call sends the next of the three signals, when its time has come.
  void end_group() {
    constexpr int signals[] = {SIGINT, SIGTERM, SIGKILL};
    if (signals_sent_ == std::size(signals) || clock::now() < next_signal_) return;
    kill(-process_, signals[signals_sent_++]);
    next_signal_ = clock::now() + between_signals;
    // What has left the group may hold the pipe for ever.
    if (signals_sent_ == std::size(signals)) output_.close();
  }

  /// Once it has ended.
  int exit_status() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1; }

 private:
  bool has_ended() {
    if (has_ended_) return true;
    pid_t const ended = waitpid(process_, &status_, WNOHANG);
    has_ended_ = ended == process_ || (ended < 0 && errno != EINTR);
    return has_ended_;
  }
  void receive() {
    char buffer[1 << 16];
    ssize_t const count = read(output_.get(), buffer, sizeof buffer);
    if (count > 0) received_.append(buffer, static_cast<std::size_t>(count));
    bool const is_later = count < 0 && (errno == EINTR || errno == EAGAIN);
    if (count <= 0 && !is_later) output_.close();
  }
  // Who has stopped reading doesn't get the rest. SIGPIPE is ignored by the program.
  void send() {
    ssize_t const count = write(input_.get(), text_.data() + sent_, text_.size() - sent_);
    if (count > 0) sent_ += static_cast<std::size_t>(count);
    bool const is_later = count < 0 && (errno == EINTR || errno == EAGAIN);
    if (sent_ == text_.size() || (count < 0 && !is_later)) input_.close();
  }

  pid_t process_;
  descriptor input_, output_;
  std::string const& text_;
  std::size_t sent_ = 0;
  std::string received_;
  int status_ = -1;
  bool has_ended_ = false;
  std::size_t signals_sent_ = 0;
  clock::time_point next_signal_{};
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
  script_file script;
  std::vector<std::string> arguments{"/bin/bash", "-c", request.script};
  bool const names_interpreter = request.script.starts_with("#!");
  if (names_interpreter || request.script.size() >= longest_string) {
    if (!script.write(request.script))
      return failure(std::string("the script can't be written: ") + std::strerror(errno));
    arguments = {script.name()};
    if (!names_interpreter) arguments.insert(arguments.begin(), "/bin/bash");
  }
  auto input = make_pipe(), output = make_pipe();
  if (!input || !output) return failure(std::strerror(errno));
  pid_t process = 0;
  int const error = spawn(process, arguments, environment_of(request.environment),
                          request.directory, input->read.get(), output->write.get());
  if (error != 0) return failure(std::string("interpreter failed: ") + std::strerror(error));
  input->read.close();
  output->write.close();
  shell_result result;
  running_command command(process, std::move(input->write), std::move(output->read), request.input);
  read_to_end(command, result);
  result.status = command.exit_status();
  result.output = std::move(command.output());
  return result;
}

}  // namespace commands
