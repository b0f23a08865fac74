#include "documents/save_file.h"

#include <sys/xattr.h>
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

std::optional<path::write_error> save_file(save_request const& request,
                                           std::optional<safety_copy>& copy) {
  struct stat entry;
  bool const is_new = lstat(request.path.c_str(), &entry) != 0 && errno == ENOENT;
  if (is_new || platform::user_defaults::standard().boolean("WynSaveAtomically"))
    if (!path::write_atomically(request.path, request.contents)) return std::nullopt;
  auto const protect = [&]() -> std::optional<path::file_error> {
    auto error =
        safety_copy::create({request.path, "", request.format, true}, request.contents, copy);
    return request.without_copy ? std::nullopt : error;
  };
  auto const error = path::write_in_place_protected(request.path, request.contents, protect);
  if (copy && !(error && error->target_damaged)) {
    copy->remove();
    copy.reset();
  }
  return error;
}

std::optional<path::write_error> save_read_only_file(save_request const& request,
                                                     std::optional<safety_copy>& copy) {
  std::string const& path = request.path;
  auto const info = info_of(path);
  mode_t const mode = info ? info->st_mode & permission_bits : 0;
  if (!info || chmod(path.c_str(), mode | write_bits) != 0)
    return path::write_error{path::make_file_error("chmod", path, errno), false};
  auto const error = save_file(request, copy);
  if (chmod(path.c_str(), mode) != 0 && !error)
    return path::write_error{path::make_file_error("chmod", path, errno), false};
  return error;
}

std::string lost_by_saving(std::string const& path) {
  auto const info = info_of(path);
  if (!info || !S_ISREG(info->st_mode) || geteuid() == 0) return "";
  // The system takes these away when anybody but root writes; only the owner can bring back marks.
  if (getxattr(path.c_str(), "security.capability", nullptr, 0) > 0) return "its capabilities";
  if (info->st_uid == geteuid()) return "";
  if (info->st_mode & S_ISUID) return "its set-user-ID mark";
  return (info->st_mode & S_ISGID) && (info->st_mode & S_IXGRP) ? "its set-group-ID mark" : "";
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

file_attributes file_attributes::for_copy() const {
  file_attributes result = *this;
  if (!result.info_) return result;
  mode_t const mask = umask(0);
  umask(mask);
  result.info_->st_mode &= ~mask & 0777;
  result.info_->st_uid = static_cast<uid_t>(-1);  // chown leaves these
  result.info_->st_gid = static_cast<gid_t>(-1);
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
