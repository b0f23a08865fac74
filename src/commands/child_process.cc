#include "commands/child_process.h"

#include "platform/log.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <vector>

namespace commands {
namespace {

using clock = std::chrono::steady_clock;

constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGKILL};

/// Leaders that were killed and have not been waited for.
std::vector<pid_t>& killed_processes() {
  static auto& processes = *new std::vector<pid_t>;
  return processes;
}

void reap_killed() {
  std::erase_if(killed_processes(), [](pid_t each) {
    pid_t const ended = waitpid(each, nullptr, WNOHANG);
    return ended == each || (ended < 0 && errno != EINTR);
  });
}

/// Leaders of groups that are to end with the program.
std::vector<pid_t>& running_processes() {
  static auto& processes = *new std::vector<pid_t>;
  return processes;
}

// The program may end in the midst of something, as it does when the display is lost.
void kill_running() {
  for (pid_t const each : running_processes()) kill(-each, SIGKILL);
}

void end_with_program(pid_t process) {
  static bool const is_registered = std::atexit(kill_running) == 0;
  if (is_registered) running_processes().push_back(process);
}

std::vector<char*> pointers_to(std::vector<std::string> const& strings) {
  std::vector<char*> result;
  for (auto const& each : strings) result.push_back(const_cast<char*>(each.c_str()));
  result.push_back(nullptr);
  return result;
}

// The kernel has a limit for all of them as well.
void leave_out_longest(std::vector<std::string>& environment) {
  auto const longest =
      std::max_element(environment.begin(), environment.end(),
                       [](auto const& a, auto const& b) { return a.size() < b.size(); });
  platform::log_text(
      "Quirnote: *** variable exceeds ARG_MAX: " + longest->substr(0, longest->find('=')) + "\n");
  environment.erase(longest);
}

// Few turns of the loop for a lot of data. The system may have a smaller limit, which is as good.
void widen(platform::descriptor const& pipe) {
  constexpr int wide = 1 << 20;
  fcntl(pipe.get(), F_SETPIPE_SZ, wide);
}

struct streams {
  int input, output, errors;
};

/// Of the program, as when it was started from a shell.
bool has_terminal() {
  static bool const has =
      platform::descriptor(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)).is_open();
  return has;
}

/// 0 or an errno. Where there is a terminal it gets a session of its own, so that it can't change
/// the terminal or be stopped by it. Not everywhere: the scheduler treats sessions apart, and a
/// new one waits for some 20 ms on a busy machine.
int spawn(pid_t& process, std::vector<std::string> const& arguments,
          std::vector<std::string> const& environment, std::string const& directory,
          streams const& ends) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&files, directory.c_str());
  posix_spawn_file_actions_adddup2(&files, ends.input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, ends.output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, ends.errors, STDERR_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
  sigset_t none, restored;
  sigemptyset(&none);
  sigemptyset(&restored);
  for (int const signal : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD})
    sigaddset(&restored, signal);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &restored);
  int const apart = has_terminal() ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
  posix_spawnattr_setpgroup(&attributes, 0);
  posix_spawnattr_setflags(
      &attributes, static_cast<short>(apart | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF));
  int const error = posix_spawn(&process, arguments[0].c_str(), &files, &attributes,
                                pointers_to(arguments).data(), pointers_to(environment).data());
  posix_spawn_file_actions_destroy(&files);
  posix_spawnattr_destroy(&attributes);
  return error;
}

}  // namespace

/// A script on disk for as long as it runs, for one that names its interpreter.
class child_process::script_file {
 public:
  /// False, with errno, when it can't be written.
  bool write(std::string const& script) {
    platform::descriptor const file(mkostemp(name_, O_CLOEXEC));
    if (!file.is_open()) return false;
    exists_ = true;
    for (std::size_t done = 0; done < script.size();) {
      ssize_t const count = ::write(file.get(), script.data() + done, script.size() - done);
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) done += static_cast<std::size_t>(count);
    }
    return fchmod(file.get(), 0700) == 0;
  }
  script_file() = default;
  script_file(script_file const&) = delete;
  script_file& operator=(script_file const&) = delete;
  ~script_file() {
    if (exists_) unlink(name_);
  }
  char const* name() const { return name_; }

 private:
  char name_[64] = "/tmp/temp_quirnote.XXXXXX";
  bool exists_ = false;
};

child_process::child_process() = default;

std::unique_ptr<child_process> child_process::start(child_request const& request,
                                                    std::string& error) {
  reap_killed();
  std::unique_ptr<child_process> child(new child_process);
  std::vector<std::string> arguments{"/bin/bash", "-c", request.script};
  bool const names_interpreter = request.script.starts_with("#!");
  if (names_interpreter || request.script.size() >= longest_string) {
    child->script_ = std::make_unique<script_file>();
    if (!child->script_->write(request.script)) {
      error = std::string("the script can't be written: ") + std::strerror(errno);
      return nullptr;
    }
    arguments = {child->script_->name()};
    if (!names_interpreter) arguments.insert(arguments.begin(), "/bin/bash");
  }
  auto input = platform::make_pipe(), output = platform::make_pipe();
  auto errors = request.separate_errors ? platform::make_pipe() : platform::pipe_ends();
  if (!input || !output || !errors) {
    error = std::strerror(errno);
    return nullptr;
  }
  int const to_errors = request.separate_errors ? errors->write.get() : output->write.get();
  auto environment = child_environment(request.environment);
  auto const try_to_spawn = [&] {
    return spawn(child->process_, arguments, environment, request.directory,
                 {input->read.get(), output->write.get(), to_errors});
  };
  int failure = try_to_spawn();
  for (; failure == E2BIG && !environment.empty(); failure = try_to_spawn())
    leave_out_longest(environment);
  if (failure != 0) {
    error = std::string("interpreter failed: ") + std::strerror(failure);
    child->process_ = 0;
    return nullptr;
  }
  end_with_program(child->process_);
  child->end_ = platform::descriptor(static_cast<int>(syscall(SYS_pidfd_open, child->process_, 0)));
  child->input_ = std::move(input->write);
  child->output_ = std::move(output->read);
  child->errors_ = std::move(errors->read);
  for (platform::descriptor const* each : {&child->input_, &child->output_, &child->errors_}) {
    if (!each->is_open()) continue;
    each->never_wait();
    widen(*each);
  }
  return child;
}

// Only now can its number, and that of its group, be given to another process.
child_process::~child_process() {
  if (process_ == 0) return;
  if (!has_ended()) kill(-process_, SIGKILL);
  std::erase(running_processes(), process_);
  killed_processes().push_back(process_);
  reap_killed();
}

bool child_process::has_ended() {
  if (has_ended_) return true;
  siginfo_t info{};
  if (waitid(P_PID, static_cast<id_t>(process_), &info, WEXITED | WNOHANG | WNOWAIT) != 0) {
    has_ended_ = errno != EINTR;
  } else if (info.si_pid == process_) {
    has_ended_ = true;
    if (info.si_code == CLD_EXITED) status_ = info.si_status;
  }
  return has_ended_;
}

void child_process::wait_for_end(int milliseconds) const {
  pollfd wanted{end_.get(), POLLIN, 0};
  poll(&wanted, end_.is_open() ? 1 : 0, milliseconds);
}

void child_process::terminate(std::chrono::milliseconds pause) {
  bool const is_due = signals_sent_ == 0 || clock::now() >= last_signal_ + pause;
  if (is_killed() || !is_due) return;
  kill(-process_, ending_signals[signals_sent_++]);
  kill(-process_, SIGCONT);  // one that is stopped gets no other signal
  last_signal_ = clock::now();
}

bool child_process::is_killed() const {
  return signals_sent_ == std::size(ending_signals);
}

}  // namespace commands
