#include "documents/save_file.h"

#include <unistd.h>

#include <cerrno>

#include "platform/user_defaults.h"

namespace documents {
namespace {

constexpr mode_t write_bits = 0222;
constexpr mode_t permission_bits = 07777;

std::optional<struct stat> info_of(std::string const& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return std::nullopt;
  return info;
}

}  // namespace

std::optional<path::write_error> save_file(std::string const& path,
                                           path::file_contents const& contents) {
  if (platform::user_defaults::standard().boolean("WynSaveAtomically"))
    if (!path::write_atomically(path, contents)) return std::nullopt;
  return path::write_in_place(path, contents);
}

std::optional<path::write_error> save_read_only_file(std::string const& path,
                                                     path::file_contents const& contents) {
  auto const info = info_of(path);
  mode_t const mode = info ? info->st_mode & permission_bits : 0;
  if (!info || chmod(path.c_str(), mode | write_bits) != 0)
    return path::write_error{path::make_file_error("chmod", path, errno), false};
  auto const error = save_file(path, contents);
  if (chmod(path.c_str(), mode) != 0 && !error)
    return path::write_error{path::make_file_error("chmod", path, errno), false};
  return error;
}

bool is_read_only(std::string const& path) {
  auto const info = info_of(path);
  return info && S_ISREG(info->st_mode) && !(info->st_mode & write_bits);
}

file_attributes file_attributes::of(std::string const& path) {
  file_attributes result;
  if (!path.empty()) result.info_ = info_of(path);
  return result;
}

void file_attributes::apply_to(std::string const& path) const {
  auto const present = info_of(path);
  if (!info_ || !present) return;
  // The owner first, since a change of it takes bits out of the mode. Only root may give files away
  // and only members a group; the bits that lend the owner's rights go with the owner only.
  bool kept = true;
  if (present->st_gid != info_->st_gid) kept &= chown(path.c_str(), -1, info_->st_gid) == 0;
  if (present->st_uid != info_->st_uid) kept &= chown(path.c_str(), info_->st_uid, -1) == 0;
  mode_t const mode = info_->st_mode & (kept ? 07777 : 0777);
  if ((present->st_mode & 07777) != mode || !kept) chmod(path.c_str(), mode);
}

}  // namespace documents
