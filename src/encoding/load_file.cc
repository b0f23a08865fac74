#include "encoding/load_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <iterator>
#include <optional>

#include "encoding/estimate.h"
#include "encoding/line_ending.h"

namespace encoding {
namespace {

using bytes = std::vector<unsigned char>;

struct file_descriptor {
  int fd;
  ~file_descriptor() {
    if (fd >= 0) ::close(fd);
  }
};

// Reads to the end rather than to the size, which is 0 for files made up by the kernel.
bool read_to_end(int fd, bytes& content) {
  for (std::size_t used = content.size();;) {
    content.resize(used + std::max<std::size_t>(used, 65536));
    ssize_t const n = ::read(fd, content.data() + used, content.size() - used);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) return false;
    used += n;
    if (n == 0) {
      content.resize(used);
      return true;
    }
  }
}

// A pipe or a device may never end, so opening must not wait for one.
std::optional<bytes> read_file(std::string const& path) {
  file_descriptor const file{::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)};
  struct stat st;
  if (file.fd < 0 || ::fstat(file.fd, &st) != 0 || !S_ISREG(st.st_mode)) return std::nullopt;
  bytes content;
  if (!read_to_end(file.fd, content)) return std::nullopt;
  return content;
}

std::string header(std::string const& path, charset_t charset, line_ending::type type) {
  std::string const rule(60, '=');
  return rule + "\n   Filename:     " + path + "\n   Encoding:     " + charset_name[charset] +
         "\n   Line endings: " + line_ending::name[type] + "\n" + rule + "\n";
}

}  // namespace

bool load_file(std::string const& path, std::vector<char16_t>& out, bool with_header) {
  std::optional<bytes> content = read_file(path);
  if (!content) return false;
  line_ending::type type = line_ending::LF;
  auto const first = content->begin();
  auto const last = harmonize_line_endings(first, content->end(), &type);
  charset_t const charset = estimate(first, last);
  if (with_header) {
    std::string const text = header(path, charset, type);
    convert_to_unicode(text.begin(), text.end(), UTF8, std::back_inserter(out));
  }
  convert_to_unicode(first, last, charset, std::back_inserter(out));
  return true;
}

}  // namespace encoding
