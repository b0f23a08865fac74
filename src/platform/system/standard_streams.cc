#include "platform/system/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace platform {

void occupy_standard_descriptors() {
  for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // The lowest free number is given, and those below are taken by now.
    (void)::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

int write_to_stream(int descriptor, char const* bytes, std::size_t size) {
  constexpr int most_interruptions = 1000;  // in a row: then it has failed
  int interruptions = 0;
  while (size != 0) {
    ssize_t const written = ::write(descriptor, bytes, size);
    if (written >= 0) {
      bytes += written;
      size -= static_cast<std::size_t>(written);
      interruptions = 0;
    } else if (errno == EAGAIN) {
      pollfd wanted{descriptor, POLLOUT, 0};
      ::poll(&wanted, 1, -1);
    } else if (errno != EINTR || ++interruptions == most_interruptions) {
      return errno;
    }
  }
  return 0;
}

}  // namespace platform
