#include "path/extended_attributes.h"

#include <sys/xattr.h>

#include <cerrno>
#include <cstddef>
#include <optional>
#include <set>

namespace path {
namespace {

/// What `call(buffer, size)` writes, which with a size of 0 gives the size that is needed. It may
/// grow between two calls. Nothing, with errno set, if it fails.
template <typename Call>
std::optional<std::string> bytes_of(Call call) {
  std::string bytes;
  for (int attempt = 0; attempt < 10; ++attempt) {
    ssize_t const needed = call(nullptr, 0);
    if (needed < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(needed));
    ssize_t const written = needed == 0 ? 0 : call(bytes.data(), bytes.size());
    if (written >= 0) return bytes.substr(0, static_cast<std::size_t>(written));
    if (errno != ERANGE) return std::nullopt;
  }
  return std::nullopt;
}

/// Names by the list of them that the system gives, each ended by a zero.
std::set<std::string> split(std::string const& list) {
  std::set<std::string> names;
  for (std::size_t begin = 0; begin < list.size();) {
    names.insert(list.c_str() + begin);
    begin = list.find('\0', begin) + 1;
  }
  return names;
}

/// Takes over one attribute, unless the file has it already as the system gives some of its own.
bool copy_attribute(std::string const& from, int to, char const* name) {
  auto const value = bytes_of(
      [&](char* buffer, std::size_t size) { return getxattr(from.c_str(), name, buffer, size); });
  if (!value) return false;
  if (fsetxattr(to, name, value->data(), value->size(), 0) == 0) return true;
  int const code = errno;
  auto const present =
      bytes_of([&](char* buffer, std::size_t size) { return fgetxattr(to, name, buffer, size); });
  errno = code;
  return present == value;
}

}  // namespace

int copy_extended_attributes(std::string const& from, int to) {
  auto const wanted = bytes_of(
      [&](char* buffer, std::size_t size) { return listxattr(from.c_str(), buffer, size); });
  if (!wanted) return errno == ENOTSUP || errno == ENOSYS ? 0 : errno;
  for (std::string const& name : split(*wanted))
    if (!copy_attribute(from, to, name.c_str())) return errno;
  // A folder can give new files an access control list.
  auto const present =
      bytes_of([&](char* buffer, std::size_t size) { return flistxattr(to, buffer, size); });
  if (!present) return errno;
  std::set<std::string> const kept = split(*wanted);
  for (std::string const& name : split(*present))
    if (!kept.contains(name) && fremovexattr(to, name.c_str()) != 0) return errno;
  return 0;
}

mode_t mode_without_access_list(std::string const& path, mode_t mode) {
  auto const list = bytes_of([&](char* buffer, std::size_t size) {
    return getxattr(path.c_str(), "system.posix_acl_access", buffer, size);
  });
  if (!list) return mode;
  // After the version come the entries: kind, rights, and whose, all with the low byte first.
  constexpr std::size_t version_size = 4, entry_size = 8;
  constexpr char group_that_owns = 0x04;
  for (std::size_t at = version_size; at + entry_size <= list->size(); at += entry_size)
    if ((*list)[at] == group_that_owns)
      mode &= ~mode_t{0070} | static_cast<mode_t>(((*list)[at + 2] & 7) << 3);
  return mode;
}

}  // namespace path
