#include "platform/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

namespace platform {
namespace {

constexpr int pause_ms = 20;
constexpr std::size_t most_output = 1 << 16;

/// Starts it with the write end of a pipe as standard error. 0 or an errno.
int start(std::vector<std::string> const& arguments, int input, int output, pid_t& process) {
  std::vector<char*> argv;
  for (auto const& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
  posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  // A key in the terminal that the editor was started from is not meant for it, and what the editor
  // ignores it need not.
  sigset_t none, ignored;
  sigemptyset(&none);
  sigemptyset(&ignored);
  sigaddset(&ignored, SIGPIPE);
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &ignored);
  posix_spawnattr_setflags(&attributes,
                           POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  int const error = posix_spawnp(&process, argv[0], &files, &attributes, argv.data(), environ);
  posix_spawn_file_actions_destroy(&files);
  posix_spawnattr_destroy(&attributes);
  return error;
}

/// Takes what is there, waiting a moment for it; false at the end.
bool read_some(int pipe, std::string& text) {
  pollfd ready{pipe, POLLIN, 0};
  if (poll(&ready, 1, pause_ms) <= 0) return true;
  char buffer[4096];
  ssize_t const count = read(pipe, buffer, sizeof buffer);
  if (count > 0) {
    text.append(buffer, std::min(static_cast<std::size_t>(count), most_output - text.size()));
    return true;
  }
  return count < 0 && errno == EINTR;
}

}  // namespace

program_result run_program(std::vector<std::string> const& arguments, int standard_input,
                           double seconds, std::function<bool()> const& go_on) {
  using clock = std::chrono::steady_clock;
  program_result result;
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    result.error = errno;
    return result;
  }
  pid_t process = 0;
  result.error = start(arguments, standard_input, ends[1], process);
  close(ends[1]);
  auto const limit = clock::now() + std::chrono::duration<double>(seconds);
  bool is_open = true, asked = false;
  while (!result.error) {
    if (is_open)
      is_open = read_some(ends[0], result.standard_error);
    else
      poll(nullptr, 0, pause_ms);
    pid_t const ended = waitpid(process, &result.status, WNOHANG);
    if (ended < 0 && errno != EINTR) result.error = errno;
    if (ended == process) break;
    bool const is_enough = !go_on() || clock::now() > limit;
    if (!asked && is_enough) asked = kill(process, SIGTERM) == 0;
  }
  pollfd rest{ends[0], POLLIN, 0};  // what it wrote last; a child it left behind may hold the pipe
  while (is_open && !result.error && poll(&rest, 1, 0) > 0)
    is_open = read_some(ends[0], result.standard_error);
  close(ends[0]);
  return result;
}

}  // namespace platform
