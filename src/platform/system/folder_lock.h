#pragma once

#include <string>

namespace platform {

/// Keeps other processes of this program from changing a folder's small files at the same time, as
/// long as it lives. A process that was stopped in the middle of a change must not stop this one
/// too, so waiting has an end: a second in which nothing in the folder has been replaced, or ten in
/// all while others replace files there one after the other.
class folder_lock {
 public:
  explicit folder_lock(std::string const& folder);
  ~folder_lock();
  folder_lock(folder_lock const&) = delete;
  folder_lock& operator=(folder_lock const&) = delete;

  /// 0 where it is held, or where the file system has no locks; else an errno.
  int error() const { return error_; }

 private:
  int fd_;
  int error_ = 0;
};

}  // namespace platform
