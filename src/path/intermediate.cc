#include "path/intermediate.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>

#include "path/extended_attributes.h"
#include "path/file_changes.h"
#include "path/file_output.h"
#include "path/file_system.h"
#include "path/path.h"

namespace path {
namespace {

bool make_folder_of(std::string const& path) {
  std::string const folder = parent(path);
  return folder.empty() || make_dir(folder);  // that of a bare name is the working folder
}

std::optional<struct statx> mount_of(std::string const& path) {
  struct statx info;
  if (statx(AT_FDCWD, path.c_str(), 0, STATX_MNT_ID, &info) != 0) return std::nullopt;
  return info;
}

/// Whether a file can be renamed from one place to the other. A file system that is mounted twice
/// is one device, but between its mounts nothing is renamed.
bool can_rename_between(std::string const& folder, std::string const& file) {
  auto const a = mount_of(folder), b = mount_of(file);
  return a && b && a->stx_dev_major == b->stx_dev_major && a->stx_dev_minor == b->stx_dev_minor &&
         a->stx_mnt_id == b->stx_mnt_id;
}

/// A new file beside the target. The user may have a file of that name, which is left alone.
std::string make_neighbour(std::string const& target) {
  std::string path = target + "~";
  int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) {
    path += ".XXXXXX";
    fd = mkostemp(path.data(), O_CLOEXEC);
  }
  if (fd < 0) return "";
  close(fd);
  return path;
}

/// The owner first, since a change of it takes bits out of the mode. Those that lend the owner's
/// rights go with the owner only. False if anything but the owner can't be kept.
bool copy_attributes(std::string const& from, struct stat const& old, int to,
                     file_system_calls& calls) {
  bool const kept = calls.fchown(to, old.st_uid, old.st_gid) == 0;
  bool const copied = copy_extended_attributes(from, to) == 0;
  return copied && calls.fchmod(to, old.st_mode & (kept ? 07777 : 0777)) == 0;
}

}  // namespace

intermediate_t::intermediate_t(std::string const& path, file_system_calls& calls)
    : target_(resolve_head(path)), calls_(calls) {
  if (!exists(target_)) {
    if (!target_.empty() && make_folder_of(target_)) write_path_ = target_;
    return;
  }
  if (can_rename_between(temp(""), target_)) write_path_ = temp("quirnote_atomic_save");
  if (write_path_.empty()) write_path_ = make_neighbour(target_);
}

intermediate_t::~intermediate_t() {
  if (is_separate() && !write_path_.empty() && !committed_) calls_.unlink(write_path_.c_str());
}

bool intermediate_t::commit() {
  if (write_path_.empty()) return false;
  if (!is_separate()) return true;
  // On another device it has stayed where it is.
  bool const swapped = swap_and_unlink(write_path_, target_, calls_);
  committed_ = swapped && !exists(write_path_);
  return committed_;
}

bool swap_and_unlink(std::string const& from, std::string const& to, file_system_calls& calls) {
  if (!exists(to)) {
    if (!make_folder_of(to)) return false;
  } else {
    if (device(from) != device(to)) return true;
    if (utimensat(AT_FDCWD, from.c_str(), nullptr, 0) != 0) return false;
  }
  if (calls.rename(from.c_str(), to.c_str()) != 0) return false;
  return !sync_folder_of(to, calls);
}

bool set_content(std::string const& path, std::string_view bytes, file_system_calls& calls) {
  intermediate_t file(path, calls);
  struct stat old;
  bool const replaces = file.is_separate();
  if (file.write_path().empty()) return false;
  if (replaces && (stat(file.target().c_str(), &old) != 0 || !S_ISREG(old.st_mode))) return false;
  file_output output(calls);
  int const flags = O_WRONLY | O_NOFOLLOW | (replaces ? 0 : O_CREAT | O_EXCL);
  if (output.open(file.write_path(), flags, 0664)) return false;
  bool const written =
      !output.write(contents_of(bytes)) &&
      (!replaces || copy_attributes(file.target(), old, output.descriptor(), calls)) &&
      !output.sync() && !output.close();
  if (!written && !replaces) calls.unlink(file.target().c_str());
  if (!written) return false;
  return replaces ? file.commit() : !sync_folder_of(file.target(), calls);
}

bool set_content(std::string const& path, char const* first, char const* last) {
  return set_content(path, std::string_view(first, static_cast<std::size_t>(last - first)));
}

}  // namespace path
