#pragma once

#include <grp.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <string>
#include <vector>

/// As long as it lives a test that runs as root has the rights of a user who owns nothing else.
class other_user {
 public:
  static constexpr unsigned id = 65534;

  other_user() : groups_(static_cast<std::size_t>(getgroups(0, nullptr))) {
    getgroups(static_cast<int>(groups_.size()), groups_.data());
    became_ = geteuid() == 0 && setgroups(0, nullptr) == 0 && setegid(id) == 0 && seteuid(id) == 0;
  }
  ~other_user() {
    if (!became_ || seteuid(0) != 0 || setegid(0) != 0) return;
    [[maybe_unused]] int const result = setgroups(groups_.size(), groups_.data());
  }
  other_user(other_user const&) = delete;
  other_user& operator=(other_user const&) = delete;

  explicit operator bool() const { return became_; }

 private:
  std::vector<gid_t> groups_;
  bool became_ = false;
};

/// Lets the file have a capability, which only root can give. False if it can't have one.
inline bool give_capability(std::string const& path) {
  constexpr char bytes[] = "\1\0\0\2\0\4\0\0\0\0\0\0\0\0\0\0\0\0\0";
  return setxattr(path.c_str(), "security.capability", bytes, sizeof bytes, 0) == 0;
}

/// The access control list of a file by which that user may read and write it beside its owner; ""
/// if it has none.
constexpr char const* access_list_name = "system.posix_acl_access";

inline std::string access_list_of(std::string const& path) {
  char bytes[256];
  ssize_t const size = getxattr(path.c_str(), access_list_name, bytes, sizeof bytes);
  return size < 0 ? "" : std::string(bytes, static_cast<std::size_t>(size));
}

/// The file's group gets the rights `group`. False where the file system has no such lists.
inline bool give_access_list(std::string const& path, char group = 4) {
  std::string bytes("\2\0\0\0", 4);  // the version; then entries of kind, rights and user
  auto const add = [&](char kind, char rights, unsigned user) {
    bytes += std::string{kind, 0, rights, 0};
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(user >> shift);
  };
  constexpr unsigned nobody = 0xFFFFFFFF;
  add(0x01, 6, nobody);
  add(0x02, 6, other_user::id);
  add(0x04, group, nobody);
  add(0x10, 6, nobody);
  add(0x20, 0, nobody);
  return setxattr(path.c_str(), access_list_name, bytes.data(), bytes.size(), 0) == 0;
}
