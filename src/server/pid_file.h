#pragma once

#include "platform/system/descriptor.h"

#include <sys/types.h>

#include <string>

namespace server {

/// The file with the process id of the running instance, in decimal. The instance keeps it locked,
/// and the system takes the lock away with the process: so a file that was left behind, or names a
/// process that came after it under the same id, is told from that of one that runs.
class pid_file {
 public:
  explicit pid_file(std::string path) : path_(std::move(path)) {}
  pid_file(pid_file const&) = delete;
  pid_file& operator=(pid_file const&) = delete;
  ~pid_file() { remove(); }

  enum class state {
    ours,     ///< from now on, with our id in it
    others,   ///< an instance runs, or is starting
    unusable  ///< see error()
  };
  /// Looks once, without waiting.
  state claim();
  /// Whose it was at the last claim; 0 if it doesn't say yet.
  pid_t other() const { return other_; }
  int error() const { return error_; }

  /// At the end; a no-op if it isn't ours.
  void remove();

 private:
  bool is_at_path() const;
  bool write_own_id();
  pid_t read_id() const;

  std::string const path_;
  platform::descriptor file_;  // locked while it is ours
  pid_t other_ = 0;
  int error_ = 0;
};

/// Whether there is such a process and it runs a program of the same name as this one.
bool runs_this_program(pid_t process);

}  // namespace server
