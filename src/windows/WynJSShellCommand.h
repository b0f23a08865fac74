#pragma once

#include "commands/background_input.h"
#include "commands/child_process.h"
#include "platform/run_loop.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// A command that a page's script runs. The page asks for what it has printed, piece by piece or
/// once all of it is there; as long as it doesn't ask, a bounded amount is read. Main thread only.
class WynJSShellCommand {
 public:
  /// What it has printed since the last answer: of each stream whole characters only, but for its
  /// end. `status` counts once it has ended.
  struct progress {
    std::string outputData = {}, errorData = {};
    bool didTerminate = false;
    int status = 0;
  };
  using answer = std::function<void(progress)>;

  /// Null if it can't be started, with the reason.
  static std::unique_ptr<WynJSShellCommand> runTaskWithCommand(
      std::string const& text, commands::variables const& environment, std::string& error);
  ~WynJSShellCommand();

  /// Answers as soon as something was printed, or it has ended. A question that is open then gets
  /// an empty answer.
  void next(answer give);
  /// Answers when it has ended.
  void wait(answer give);

  void write(std::string_view text) { input_.write(text); }
  std::size_t pendingInput() const { return input_.pending(); }
  void close() { input_.close(); }
  void cancel();

 private:
  struct stream {
    platform::descriptor* pipe = nullptr;
    std::string data;
    std::unique_ptr<platform::descriptor_watch> watch;
  };

  WynJSShellCommand(std::unique_ptr<commands::child_process> task, platform::run_loop& loop);
  void dataAvailable(stream& from);
  void watchStreams();
  void checkForData();
  void lookForEnd();
  std::string take(stream& from);

  std::unique_ptr<commands::child_process> task_;
  platform::run_loop& loop_;
  commands::background_input input_;
  std::array<stream, 2> streams_;  // output, errors
  std::unique_ptr<platform::timer> timer_;
  answer next_, wait_;
  bool didTerminate_ = false, isCancelled_ = false;
};
