// The one thing that the editor does with an administrator's rights: a file gets the bytes that
// stand on standard input. It is a program of its own, small enough to be read before it is
// trusted, and uses nothing but the C library.
//
// The caller has shown the path to the user, who has agreed to it, so the path must lead there
// and nowhere else: each component is opened in the folder before it, none may be a link, and an
// existing file must be the very one that the editor has looked at, and hold what it held then.
// Nothing is touched until all the bytes have arrived, in the number that was announced. Owner,
// group and mode stay; a new file has its mode before it has its first byte. What other programs
// write to the file meanwhile is reported. At the end the identity of the file that was written is
// printed: a later look at the path may find another one.

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "privileged/write_file_status.h"

namespace {

constexpr char const* usage =
    "usage: quirnote-write-file SIZE DEVICE:INODE:SIZE:MODIFIED|new:MODE PATH\n"
    "Writes SIZE bytes from standard input to the regular file at PATH, which has that identity,\n"
    "size and date (in nanoseconds) or is new and gets that mode (in octal, 777 at most). PATH is\n"
    "absolute and leads through no symbolic link. Prints what DEVICE:INODE:SIZE:MODIFIED are then."
    "\n";

struct failure {
  char const* operation;
  std::string reason;
};

[[noreturn]] void fail(char const* operation) {
  throw failure{operation, std::strerror(errno)};
}

class descriptor {
 public:
  descriptor(int fd, char const* operation) : fd_(fd) {
    if (fd_ < 0) fail(operation);
  }
  descriptor(descriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  descriptor& operator=(descriptor&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~descriptor() {
    if (fd_ >= 0) close(fd_);
  }
  int get() const { return fd_; }
  void close_and_look() {
    if (close(std::exchange(fd_, -1)) != 0 && errno != EINTR) fail("close");
  }

 private:
  int fd_;
};

struct request {
  std::uint64_t size = 0;
  bool is_new = false;
  mode_t mode = 0;                 ///< of a new file
  std::uint64_t identity[4] = {};  ///< device, inode, size in bytes, date in nanoseconds
  std::string_view path;
};

bool read_number(std::string_view text, std::uint64_t& number) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size();
}

bool read_identity(std::string_view text, std::uint64_t (&numbers)[4]) {
  for (std::uint64_t& number : numbers) {
    bool const is_last = &number == std::end(numbers) - 1;
    auto const end = is_last ? text.size() : text.find(':');
    if (end == text.npos || !read_number(text.substr(0, end), number)) return false;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return true;
}

/// "new:644"
bool read_new(std::string_view text, mode_t& mode) {
  constexpr std::string_view mark = "new:";
  if (!text.starts_with(mark)) return false;
  auto const [end, error] =
      std::from_chars(text.data() + mark.size(), text.data() + text.size(), mode, 8);
  return error == std::errc() && end == text.data() + text.size() && mode <= 0777;
}

bool read_arguments(int count, char** arguments, request& result) {
  if (count != 4) return false;
  result.is_new = read_new(arguments[2], result.mode);
  result.path = arguments[3];
  constexpr auto largest = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
  return read_number(arguments[1], result.size) && result.size <= largest &&
         (result.is_new || read_identity(arguments[2], result.identity)) &&
         result.path.starts_with('/');
}

/// The folder of the path, which is left with its last component.
descriptor open_folder(std::string_view& path) {
  constexpr int how = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  descriptor folder(open("/", how), "open");
  for (path.remove_prefix(1);;) {
    std::string const component(path.substr(0, path.find('/')));
    if (component.empty() || component == "." || component == "..")
      throw failure{"open", "The path is not a plain one"};
    if (component.size() == path.size()) return folder;
    folder = descriptor(openat(folder.get(), component.c_str(), how), "open");
    path.remove_prefix(component.size() + 1);
  }
}

/// The size must be this as long as no other process writes.
void expect_size(int file, off_t size) {
  struct stat info;
  if (fstat(file, &info) != 0) fail("fstat");
  if (info.st_size != size)
    throw failure{"write", "Another program has written to it at the same time"};
}

void write_all(int to, char const* bytes, std::size_t count) {
  while (count != 0) {
    ssize_t const written = write(to, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written == 0) errno = ENOSPC;
    if (written <= 0) fail("write");
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
}

/// All of standard input in memory: its writer may stop half-way, or change it.
descriptor read_input(std::uint64_t size) {
  descriptor memory(memfd_create("quirnote-write-file", MFD_CLOEXEC), "memfd_create");
  std::uint64_t total = 0;
  char buffer[1 << 16];
  while (ssize_t const count = read(STDIN_FILENO, buffer, sizeof buffer)) {
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("read");
    total += static_cast<std::uint64_t>(count);
    if (total > size) break;
    write_all(memory.get(), buffer, static_cast<std::size_t>(count));
  }
  if (total != size) throw failure{"read", "The text did not arrive whole"};
  return memory;
}

/// Over a file of `old_size` bytes, or a new one.
void copy(int from, int to, off_t old_size) {
  char buffer[1 << 16];
  for (off_t offset = 0;;) {
    ssize_t const count = pread(from, buffer, sizeof buffer, offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail("read");
    expect_size(to, std::max(old_size, offset));
    if (count == 0) return;
    write_all(to, buffer, static_cast<std::size_t>(count));
    offset += count;
  }
}

void sync(int fd) {
  while (fsync(fd) != 0) {
    if (errno == EINVAL) return;  // the file system has nothing to sync
    if (errno != EINTR) fail("fsync");
  }
}

/// From here on nothing may interrupt: neither a key in the terminal nor a limit that kills.
void hold_signals() {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, nullptr);
}

/// Room for the new bytes, so that a full disk leaves the old ones alone.
void reserve(int file, struct stat const& old, std::uint64_t size) {
  if (size == 0 || fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0) return;
  if (errno != ENOSPC && errno != EDQUOT && errno != EFBIG && errno != EIO) return;
  int const code = errno;
  expect_size(file, old.st_size);  // what others have added stays
  if (ftruncate(file, old.st_size) != 0) fail("ftruncate");
  errno = code;
  fail("fallocate");
}

std::uint64_t date_of(struct stat const& info) {
  return static_cast<std::uint64_t>(std::int64_t{info.st_mtim.tv_sec} * 1'000'000'000 +
                                    info.st_mtim.tv_nsec);
}

/// The file has all its bytes.
struct stat finish(descriptor& file, std::uint64_t size) {
  sync(file.get());
  expect_size(file.get(), static_cast<off_t>(size));
  struct stat info;
  if (fstat(file.get(), &info) != 0) fail("fstat");
  file.close_and_look();
  return info;
}

struct stat overwrite(request const& wanted, int folder, char const* name, int bytes,
                      bool& touched) {
  struct stat info;
  if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0) fail("stat");
  // To open what is no regular file may do something already.
  auto const check = [&] {
    if (!S_ISREG(info.st_mode)) throw failure{"open", "It is no regular file"};
    if (info.st_dev != wanted.identity[0] || info.st_ino != wanted.identity[1])
      throw failure{"open", "It is another file now"};
    if (static_cast<std::uint64_t>(info.st_size) != wanted.identity[2] ||
        date_of(info) != wanted.identity[3])
      throw failure{"open", "Another program has changed it"};
  };
  check();
  constexpr int how = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  descriptor file(openat(folder, name, how), "open");
  if (fstat(file.get(), &info) != 0) fail("fstat");
  check();
  hold_signals();
  reserve(file.get(), info, wanted.size);
  touched = true;
  copy(bytes, file.get(), info.st_size);
  if (static_cast<std::uint64_t>(info.st_size) > wanted.size &&
      ftruncate(file.get(), static_cast<off_t>(wanted.size)) != 0)
    fail("ftruncate");
  return finish(file, wanted.size);
}

struct stat create(request const& wanted, int folder, char const* name, int bytes) {
  hold_signals();
  constexpr int how = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  descriptor file(openat(folder, name, how, 0600), "open");
  struct stat made;
  try {
    if (fchmod(file.get(), wanted.mode) != 0) fail("fchmod");
    copy(bytes, file.get(), 0);
    made = finish(file, wanted.size);
  } catch (failure const&) {
    unlinkat(folder, name, 0);
    throw;
  }
  descriptor entries(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC), "open");
  sync(entries.get());
  return made;
}

void print_identity(struct stat const& info) {
  std::printf("%ju:%ju:%ju:%ju\n", std::uintmax_t{info.st_dev}, std::uintmax_t{info.st_ino},
              static_cast<std::uintmax_t>(info.st_size), std::uintmax_t{date_of(info)});
}

}  // namespace

int main(int argc, char** argv) {
  request wanted;
  if (!read_arguments(argc, argv, wanted)) {
    std::fputs(usage, stderr);
    return static_cast<int>(write_file_status::wrong_usage);
  }
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  bool touched = false;
  try {
    descriptor const bytes = read_input(wanted.size);
    std::string_view rest = wanted.path;
    descriptor const folder = open_folder(rest);
    std::string const name(rest);
    print_identity(wanted.is_new
                       ? create(wanted, folder.get(), name.c_str(), bytes.get())
                       : overwrite(wanted, folder.get(), name.c_str(), bytes.get(), touched));
  } catch (failure const& f) {
    std::fprintf(stderr, "quirnote-write-file: %s: %s\n", f.operation, f.reason.c_str());
    return static_cast<int>(touched ? write_file_status::damaged : write_file_status::unchanged);
  }
  return static_cast<int>(write_file_status::written);
}
