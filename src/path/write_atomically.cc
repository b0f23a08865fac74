#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "path/extended_attributes.h"
#include "path/file_output.h"
#include "path/neighbour.h"

namespace path {
namespace {

class atomic_write {
 public:
  /// `target` is no link.
  atomic_write(std::string target, file_system_calls& calls)
      : target_(std::move(target)), calls_(calls), output_(calls) {}

  ~atomic_write() {
    if (temporary_exists_) calls_.unlink(output_.path().c_str());
  }

  std::optional<file_error> run(file_contents const& contents) {
    if (auto failure = look_at_target()) return failure;
    if (auto failure = make_temporary()) return failure;
    if (auto failure = output_.write(contents)) return failure;
    if (auto failure = copy_attributes()) return failure;
    if (auto failure = output_.sync()) return failure;
    if (auto failure = output_.close()) return failure;
    if (calls_.rename(output_.path().c_str(), target_.c_str()) != 0) return output_.error("rename");
    temporary_exists_ = false;
    remove_left_over_neighbours(target_, calls_);
    return sync_folder_of(target_, calls_);
  }

 private:
  std::optional<file_error> look_at_target() {
    replaces_ = ::stat(target_.c_str(), &old_) == 0;
    if (replaces_) {
      if (auto refusal = refusal_to_write(target_, old_.st_mode)) return refusal;
      if (old_.st_nlink == 1) return std::nullopt;
      return make_file_error("rename", target_,
                             EMLINK);  // the other links would keep the old bytes
    }
    if (errno == ENOENT) return std::nullopt;
    return make_file_error("stat", target_, errno);
  }

  std::optional<file_error> make_temporary() {
    std::optional<file_error> failure;
    for (int attempt = 0; attempt < 100; ++attempt) {
      int const flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW;
      failure = output_.open(neighbour_of(target_), flags, replaces_ ? 0600 : 0666);
      temporary_exists_ = !failure;
      if (!failure || failure->code != EEXIST) break;
    }
    if (!failure) hold_neighbour(output_.descriptor());
    return failure;
  }

  /// The owner first, since a change of it takes bits out of the mode.
  std::optional<file_error> copy_attributes() {
    if (!replaces_) return std::nullopt;
    int const fd = output_.descriptor();
    struct stat made;
    if (calls_.fstat(fd, &made) != 0) return output_.error("fstat");
    bool const same_owner = made.st_uid == old_.st_uid && made.st_gid == old_.st_gid;
    auto const set_owner = [&] { return calls_.fchown(fd, old_.st_uid, old_.st_gid); };
    auto const set_mode = [&] { return calls_.fchmod(fd, old_.st_mode & 07777); };
    if (!same_owner && uninterrupted(set_owner) != 0) return output_.error("fchown");
    if (uninterrupted(set_mode) != 0) return output_.error("fchmod");
    int const code = copy_extended_attributes(target_, fd);
    return code ? std::optional(make_file_error("fsetxattr", target_, code)) : std::nullopt;
  }

  std::string target_;
  file_system_calls& calls_;
  file_output output_;
  struct stat old_ {};
  bool replaces_ = false;
  bool temporary_exists_ = false;
};

}  // namespace

std::optional<write_error> write_atomically(std::string const& path, file_contents const& contents,
                                            file_system_calls& calls) {
  char target[PATH_MAX];
  struct stat info;
  bool const is_link = ::lstat(path.c_str(), &info) == 0 && S_ISLNK(info.st_mode);
  if (is_link && !::realpath(path.c_str(), target)) {
    if (errno == ENOENT) return write_in_place(path, contents, calls);
    return write_error{make_file_error("realpath", path, errno), false};
  }
  atomic_write write(is_link ? target : path, calls);
  if (auto failure = write.run(contents)) return write_error{*failure, false};
  return std::nullopt;
}

}  // namespace path
