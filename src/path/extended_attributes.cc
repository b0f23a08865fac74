#include "path/extended_attributes.h"

#include <sys/xattr.h>

#include <cerrno>
#include <cstring>

namespace path {
namespace {

/// What `call(buffer, size)` writes, which with a size of 0 gives the size that is needed. It may
/// grow between two calls.
template <typename Call>
std::string bytes_of(Call call) {
  std::string bytes;
  for (int attempt = 0; attempt < 10; ++attempt) {
    ssize_t const needed = call(nullptr, 0);
    if (needed <= 0) return "";
    bytes.resize(static_cast<std::size_t>(needed));
    ssize_t const written = call(bytes.data(), bytes.size());
    if (written >= 0) return bytes.substr(0, static_cast<std::size_t>(written));
    if (errno != ERANGE) return "";
  }
  return "";
}

}  // namespace

void copy_extended_attributes(std::string const& from, int to) {
  std::string const names = bytes_of(
      [&](char* buffer, std::size_t size) { return listxattr(from.c_str(), buffer, size); });
  for (std::size_t begin = 0; begin < names.size();) {
    char const* const name = names.c_str() + begin;
    std::string const value = bytes_of(
        [&](char* buffer, std::size_t size) { return getxattr(from.c_str(), name, buffer, size); });
    fsetxattr(to, name, value.data(), value.size(), 0);
    begin += std::strlen(name) + 1;
  }
}

}  // namespace path
