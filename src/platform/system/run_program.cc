#include "platform/system/run_program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <iterator>
#include <utility>

namespace platform {
namespace {

constexpr int pause_ms = 20;
constexpr std::size_t most_output = 1 << 16;

/// A pipe for what a program writes.
class output_pipe {
 public:
  output_pipe() : error_(pipe2(ends_, O_CLOEXEC) == 0 ? 0 : errno) {}
  output_pipe(output_pipe const&) = delete;
  output_pipe& operator=(output_pipe const&) = delete;
  ~output_pipe() {
    close_end(ends_[0]);
    close_end(ends_[1]);
  }

  int error() const { return error_; }
  int read_end() const { return ends_[0]; }  ///< -1 once all has been read
  int write_end() const { return ends_[1]; }
  void close_write_end() { close_end(ends_[1]); }

  void read_some() {
    char buffer[4096];
    ssize_t const count = read(ends_[0], buffer, sizeof buffer);
    if (count > 0)
      text_.append(buffer, std::min(static_cast<std::size_t>(count), most_output - text_.size()));
    else if (count == 0 || errno != EINTR)
      close_end(ends_[0]);
  }
  std::string take_text() { return std::move(text_); }

 private:
  static void close_end(int& end) {
    if (end >= 0) close(std::exchange(end, -1));
  }

  int ends_[2] = {-1, -1};
  int error_;
  std::string text_;
};

struct output_pipes {
  output_pipe output, error;

  /// Takes what is there, waiting for it this long. False if there was nothing.
  bool read_some(int milliseconds) {
    pollfd ready[] = {{output.read_end(), POLLIN, 0}, {error.read_end(), POLLIN, 0}};
    if (poll(ready, std::size(ready), milliseconds) <= 0) return false;
    if (ready[0].revents) output.read_some();
    if (ready[1].revents) error.read_some();
    return true;
  }
};

/// 0 or an errno.
int start(std::vector<std::string> const& arguments, int input, output_pipes const& pipes,
          pid_t& process) {
  std::vector<char*> argv;
  for (auto const& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&files, pipes.output.write_end(), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&files, pipes.error.write_end(), STDERR_FILENO);
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

}  // namespace

program_result run_program(std::vector<std::string> const& arguments, int standard_input,
                           double seconds, std::function<bool()> const& go_on) {
  using clock = std::chrono::steady_clock;
  program_result result;
  output_pipes pipes;
  if ((result.error = pipes.output.error()) || (result.error = pipes.error.error())) return result;
  pid_t process = 0;
  result.error = start(arguments, standard_input, pipes, process);
  pipes.output.close_write_end();
  pipes.error.close_write_end();
  auto const limit = clock::now() + std::chrono::duration<double>(seconds);
  bool asked = false;
  while (!result.error) {
    pipes.read_some(pause_ms);
    pid_t const ended = waitpid(process, &result.status, WNOHANG);
    if (ended < 0 && errno != EINTR) result.error = errno;
    if (ended == process) break;
    bool const is_enough = !go_on() || clock::now() > limit;
    if (!asked && is_enough) asked = kill(process, SIGTERM) == 0;
  }
  // What it wrote last; a child it left behind may hold the pipes.
  while (!result.error && pipes.read_some(0)) {
  }
  result.standard_output = pipes.output.take_text();
  result.standard_error = pipes.error.take_text();
  return result;
}

}  // namespace platform
