#pragma once

#include "platform/system/descriptor.h"
#include "wire/message.h"

#include <optional>
#include <string>

namespace wire {

/// A connection to the running editor, as other programs have it. It waits where it has to.
class client {
 public:
  /// Whether it is connected is asked for then.
  explicit client(std::string const& folder, std::string const& instance);

  bool is_connected() const { return socket_.is_open(); }
  /// An errno: why it isn't, or why sending failed.
  int error() const { return error_; }
  /// Of the editor; 0 if it can't be known.
  int process() const;

  /// `passed` is a descriptor that goes along, or -1.
  bool send(request const& message, int passed = -1);
  /// The next answer. Nothing at the end, on bytes that are none, or when none came in time, which
  /// sets ETIMEDOUT as the error; a negative number of seconds waits for ever.
  std::optional<answer> receive(double seconds);

 private:
  platform::descriptor socket_;
  frame_reader reader_;
  int error_ = 0;
};

}  // namespace wire
