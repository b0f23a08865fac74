#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

/// The system calls that reading and replacing a small file takes, in one place, so that tests can
/// let any of them fail. Results and errno are those of the calls of the same name.
class file_calls {
 public:
  virtual ~file_calls() = default;
  virtual int open(char const* path, int flags, mode_t mode);
  virtual ssize_t read(int fd, void* buffer, std::size_t count);
  virtual ssize_t write(int fd, void const* buffer, std::size_t count);
  virtual int fstat(int fd, struct stat* info);
  virtual int fchmod(int fd, mode_t mode);
  virtual int fchown(int fd, uid_t owner, gid_t group);
  virtual int fsync(int fd);
  virtual int close(int fd);
  virtual int rename(char const* from, char const* to);
  virtual int unlink(char const* path);
  // Names in an open folder; links aren't followed.
  virtual int linkat(int folder, char const* from, char const* to);
  virtual int unlinkat(int folder, char const* name);
  virtual int renameat2(int folder, char const* from, char const* to, unsigned flags);

  /// The real ones.
  static file_calls& system();
};

/// The folder whose entry `path` is: "." for a bare name.
std::string folder_of(std::string const& path);
/// The name of that entry.
std::string name_of(std::string const& path);

/// In bytes. What is larger is none of our settings, items and lists.
constexpr std::size_t largest_small_file = std::size_t{64} << 20;

/// Reads the whole file. Returns 0 or an errno: EFBIG for more than `largest_small_file`.
int read_file(std::string const& path, std::string& contents, file_calls& calls,
              struct stat* info = nullptr);

/// Puts a file with these contents in the place of `path`, so that readers, and whatever
/// interrupts this, finds either the old or the new contents whole. An existing file's owner
/// and mode are kept, a new one gets 0600. A link is followed, but not by root another user's:
/// EPERM. Returns 0 or an errno: the old file then stands as it was, except that after EIO from the
/// last step the new one may stand already.
int replace_file(std::string const& path, std::string_view contents, file_calls& calls);

/// Gives the file at `path` a name under which it is kept: PATH.damaged-N, set in `kept`. Returns 0
/// or an errno.
int set_aside(std::string const& path, std::string& kept, file_calls& calls);

/// Removes what interrupted replacements of `path` left behind.
void remove_left_over_temporaries(std::string const& path, file_calls& calls);

}  // namespace platform
