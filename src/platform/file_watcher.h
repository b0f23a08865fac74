#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "platform/run_loop.h"
#include "platform/waiting.h"

namespace platform {

/// Reports that a file has been written, replaced, removed, made again or given another date. It
/// doesn't report which, nor by whom: the callee compares the file with what it knows.
///
/// The folders are what is watched, so that a file is seen that another takes the place of; those
/// of symbolic links on the way too, and where a folder is missing the one it would stand in. Calls
/// come from the run loop, when a file has been left alone for a moment or has been changed for too
/// long. A task that takes long makes the next one come later, so that a file that grows all the
/// time leaves time for the user; the time in which it waited for the user doesn't count.
///
/// There is no promise: changes by other machines on a network are not reported, and the kernel may
/// refuse to watch. So files are also compared at other occasions. Main thread only.
class file_watcher {
  class file;

 public:
  /// In seconds: without a change until it is reported; and with changes at most.
  static constexpr double rest = 0.2, patience = 2;

  /// Both must outlive it.
  file_watcher(run_loop& loop, waiting const& waits) : loop_(loop), waits_(waits) {}
  ~file_watcher();
  file_watcher(file_watcher const&) = delete;
  file_watcher& operator=(file_watcher const&) = delete;

  /// Watches as long as it lives; may outlive the watcher.
  class token {
   public:
    virtual ~token() = default;
  };
  /// For an absolute path, whether there is such a file or not. `changed` may drop the token.
  std::unique_ptr<token> watch(std::string path, std::function<void()> changed);
  /// The same for a folder and the files and folders that stand in it, but not for what is below
  /// these. Their dates and rights don't count.
  std::unique_ptr<token> watch_folder(std::string path, std::function<void()> changed);
  /// Folders that aren't watched yet won't be: for a run loop whose time stands still.
  void watch_no_more() { is_off_ = true; }

 private:
  bool start();
  int add_folder(std::string const& folder);
  void drop_folder(int number);
  void read_events();
  void handle_events(char const* buffer, ssize_t size);
  void handle(int number, char const* name, std::uint32_t what);

  run_loop& loop_;
  waiting const& waits_;
  int descriptor_ = -1;
  bool is_off_ = false;
  std::unique_ptr<descriptor_watch> readable_;
  std::map<int, int> users_;  ///< of each watched folder, by the kernel's number for it
  std::set<file*> files_;
};

}  // namespace platform
