#pragma once

#include "platform/run_loop.h"
#include "platform/system/descriptor.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace commands {

/// Writes to the standard input of a running command, as fast as it reads, while the run loop goes
/// on. What a command that has stopped reading doesn't take is dropped. Main thread only.
class background_input {
 public:
  /// `pipe` must outlive it.
  background_input(platform::descriptor& pipe, platform::run_loop& loop);

  void write(std::string_view text);
  /// Ends the input once all of it is written.
  void close();
  /// Bytes that the command hasn't taken yet.
  std::size_t pending() const { return text_.size() - written_; }

 private:
  void send();

  platform::descriptor& pipe_;
  platform::run_loop& loop_;
  std::string text_;
  std::size_t written_ = 0;
  bool closes_ = false;
  std::unique_ptr<platform::timer> timer_;
};

}  // namespace commands
