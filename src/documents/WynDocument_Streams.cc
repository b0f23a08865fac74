#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <optional>

#include "documents/WynDocument.h"
#include "documents/document_alerts.h"
#include "documents/storage_bytes.h"

namespace {

// Whoever reads a pipe may have set it not to wait.
bool write_all(int descriptor, unsigned char const* bytes, std::size_t size) {
  while (size != 0) {
    ssize_t const written = ::write(descriptor, bytes, size);
    if (written >= 0) {
      bytes += written;
      size -= static_cast<std::size_t>(written);
    } else if (errno == EAGAIN) {
      pollfd wanted{descriptor, POLLOUT, 0};
      ::poll(&wanted, 1, -1);
    } else if (errno != EINTR) {
      return false;
    }
  }
  return true;
}

}  // namespace

bool WynDocument::writeToStream(int descriptor, std::string const& name) const {
  auto const format = formatForSaving();
  if (!format) return false;
  int code = 0;
  try {
    documents::storage_bytes(*storage_, *format)
        .produce([&](unsigned char const* bytes, std::size_t size) {
          if (!write_all(descriptor, bytes, size)) code = errno;
          return code == 0;
        });
  } catch (std::bad_alloc const&) {
    code = ENOMEM;
  }
  if (code != 0)
    documents::tell_could_not_save(path::write_error{path::make_file_error("write", name, code)},
                                   name);
  return code == 0;
}
