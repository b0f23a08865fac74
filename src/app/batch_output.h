#pragma once

#include <string>
#include <string_view>

#include "platform/escaped.h"

namespace app {

/// Standard output, shared by what is printed for each file of a run.
class batch_output {
 public:
  enum class heading {
    none,   ///< for one file
    lines,  ///< "==> FILE <==" on a line of its own
    nulls   ///< the name as it is, a zero byte, what is printed, a zero byte
  };

  explicit batch_output(heading style) : style_(style) {}

  void begin_file(std::string_view name);
  void end_file();
  void put(std::string_view text);
  /// Hands on what is buffered. The errno of the first thing that could not be written, or 0.
  int flush();

 private:
  void write(std::string_view text);

  heading const style_;
  bool stands_in_line_ = false;
  std::string waiting_;
  int error_ = 0;
};

}  // namespace app
