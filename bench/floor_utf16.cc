// The least that opening a file can cost: read it whole and decode it into one block of UTF-16.

#include <unicode/ustring.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <algorithm>

int main(int argc, char** argv) {
  int const fd = argc == 2 ? open(argv[1], O_RDONLY) : -1;
  struct stat info;
  if (fd < 0 || fstat(fd, &info) != 0) return 1;
  auto const size = static_cast<std::size_t>(info.st_size);
  char* const bytes = static_cast<char*>(std::malloc(size + 1));
  for (std::size_t at = 0; at < size;) {
    ssize_t const n = read(fd, bytes + at, size - at);
    if (n <= 0) return 1;
    at += static_cast<std::size_t>(n);
  }
  auto* const units = static_cast<char16_t*>(std::malloc(2 * size + 2));
  std::int32_t length = 0;
  UErrorCode error = U_ZERO_ERROR;
  u_strFromUTF8(units, static_cast<std::int32_t>(size), &length, bytes,
                static_cast<std::int32_t>(size), &error);
  std::printf("%d units, %td lines\n", length, std::count(units, units + length, u'\n'));
  return 0;
}
