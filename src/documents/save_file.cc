#include "documents/save_file.h"

#include "settings/store.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

namespace documents {
namespace {

constexpr mode_t write_bits = 0222;

std::optional<struct stat> info_of(std::string const& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return std::nullopt;
  return info;
}

}  // namespace

std::optional<path::write_error> save_file(save_request const& request,
                                           std::optional<safety_copy>& copy,
                                           std::optional<path::file_version>& written,
                                           path::file_system_calls& calls) {
  struct stat entry;
  bool const is_new = lstat(request.path.c_str(), &entry) != 0 && errno == ENOENT;
  if (is_new || settings::store().boolean("WynSaveAtomically")) {
    auto const failure =
        path::write_atomically(request.path, request.contents, request.options, written, calls);
    if (!failure || failure->changed || failure->is_in_place) return failure;
  }
  path::write_options options = request.options;
  options.protect = [&]() -> std::optional<path::file_error> {
    auto error = safety_copy::create({request.path, "", request.format, true}, request.contents,
                                     copy, calls);
    return request.without_copy ? std::nullopt : error;
  };
  auto const error = path::write_in_place(request.path, request.contents, options, written, calls);
  if (copy && !(error && error->target_damaged)) {
    copy->remove();
    copy.reset();
  }
  return error;
}

std::string lost_by_saving(std::string const& path) {
  auto const info = info_of(path);
  if (!info || !S_ISREG(info->st_mode)) return "";
  // The system removes these at any write; only the owner can restore marks.
  if (getxattr(path.c_str(), "security.capability", nullptr, 0) > 0) return "its capabilities";
  if (geteuid() == 0 || info->st_uid == geteuid()) return "";
  if (info->st_mode & S_ISUID) return "its set-user-ID mark";
  return (info->st_mode & S_ISGID) && (info->st_mode & S_IXGRP) ? "its set-group-ID mark" : "";
}

bool is_read_only(std::string const& path) {
  auto const info = info_of(path);
  return info && S_ISREG(info->st_mode) && !(info->st_mode & write_bits);
}

}  // namespace documents
