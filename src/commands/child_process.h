#pragma once

#include "commands/child_environment.h"
#include "platform/system/descriptor.h"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace commands {

struct child_request {
  std::string script;  ///< for bash, or for what its first line names if that begins with #!
  variables environment = {};    ///< see child_environment()
  std::string directory = {};    ///< to run in; "" for the program's own
  bool separate_errors = false;  ///< else errors come by output(), in their order
};

/// A command under way: a process that leads a group of its own, has no terminal, and no open files
/// but the three streams. Nothing here waits but wait_for_end(). Main thread only.
///
///     std::string error;
///     auto const child = child_process::start({.script = "sort"}, error);
///     ...                                    // write to input(), read from output() by poll()
///     if (wants_it_to_end) child->terminate();   // in every turn of a loop
///     if (child->has_ended() && !child->output().is_open()) use(child->exit_status());
class child_process {
 public:
  /// Null if it can't be started, with the reason in `error`.
  static std::unique_ptr<child_process> start(child_request const& request, std::string& error);
  /// Kills the group unless its leader has ended.
  ~child_process();
  child_process(child_process const&) = delete;
  child_process& operator=(child_process const&) = delete;

  /// The ends of its pipes, which never wait: for who uses them to close. errors() is open only
  /// with separate_errors. Processes that the command has started may hold the others, so output
  /// may come after it has ended; and it may go on when it has closed them.
  platform::descriptor& input() { return input_; }
  platform::descriptor& output() { return output_; }
  platform::descriptor& errors() { return errors_; }

  pid_t id() const { return process_; }
  bool has_ended();
  /// Returns when it has, but waits at most so many milliseconds.
  void wait_for_end(int milliseconds) const;
  /// Once it has ended; -1 after a signal.
  int exit_status() const { return status_; }

  static constexpr std::chrono::milliseconds between_signals{2000};
  /// Each call sends the group the next of SIGINT, SIGTERM and SIGKILL when so much time has passed
  /// since the one before.
  void terminate(std::chrono::milliseconds pause = between_signals);
  /// All three have been sent. What has left the group may hold the pipes for ever.
  bool is_killed() const;

 private:
  class script_file;
  child_process();

  pid_t process_ = 0;
  platform::descriptor input_, output_, errors_;
  platform::descriptor end_;  ///< of the process: readable once it has ended
  std::unique_ptr<script_file> script_;
  int status_ = -1;
  bool has_ended_ = false;
  std::size_t signals_sent_ = 0;
  std::chrono::steady_clock::time_point last_signal_{};
};

}  // namespace commands
