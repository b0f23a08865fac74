#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "path/extended_attributes.h"
#include "path/file_output.h"
#include "path/write_target.h"
#include "platform/system/rename_to_new.h"
#include "platform/system/temporary_files.h"

namespace path {
namespace {

class atomic_write {
 public:
  atomic_write(std::string const& path, write_options const& options, file_system_calls& calls)
      : options_(options),
        calls_(calls),
        target_(path, options, calls),
        old_file_(calls),
        output_(calls) {}

  ~atomic_write() {
    if (!temporary_.empty()) calls_.unlinkat(target_.place().folder(), temporary_.c_str());
  }

  std::optional<write_error> run(file_contents const& contents,
                                 std::optional<file_version>& written) {
    if (auto refusal = target_.find()) return refusal;
    if (auto refusal = hold_old_file()) return refusal;
    if (auto failure = make(contents)) return write_error{*failure};
    if (auto failure = put_in_place()) return failure;
    if (auto failure = finish()) return failure;
    written = version_of(made_);
    return std::nullopt;
  }

 private:
  bool replaces() const { return target_.info().has_value(); }
  std::string const& path() const { return target_.path(); }

  /// So that what is looked at and taken along is of one file, whatever the name stands for.
  std::optional<write_error> hold_old_file() {
    if (!replaces()) return std::nullopt;
    open_place const& place = target_.place();
    if (int const code = old_file_.openat(place.folder(), place.name(), O_PATH | O_NOFOLLOW))
      return write_error{make_file_error("open", path(), code)};
    if (calls_.fstat(old_file_.get(), &old_) != 0)
      return write_error{make_file_error("fstat", path(), errno)};
    if (auto refusal = target_.refusal(old_)) return refusal;
    if (old_.st_nlink == 1) return std::nullopt;
    // The other links would keep the old bytes.
    return write_error{make_file_error("rename", path(), EMLINK)};
  }

  std::optional<file_error> make(file_contents const& contents) {
    if (auto failure = make_temporary()) return failure;
    if (auto failure = output_.write(contents)) return failure;
    if (auto failure = copy_attributes()) return failure;
    if (auto failure = output_.sync()) return failure;
    if (calls_.fstat(output_.descriptor(), &made_) != 0) return output_.error("fstat");
    return output_.close();
  }

  std::optional<file_error> make_temporary() {
    std::optional<file_error> failure;
    for (int attempt = 0; attempt < 100; ++attempt) {
      std::string const name = platform::temporary_name(target_.place().name());
      failure = output_.openat(target_.place().folder(), name, path(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                               replaces() || target_.attributes(false) ? 0600 : 0666);
      if (!failure) temporary_ = name;
      if (!failure || failure->code != EEXIST) break;
    }
    if (!failure) platform::hold_temporary(output_.descriptor());
    return failure;
  }

  std::optional<file_error> copy_attributes() {
    int const fd = output_.descriptor();
    struct stat made;
    if (calls_.fstat(fd, &made) != 0) return output_.error("fstat");
    if (replaces()) {
      std::string const held = "/proc/self/fd/" + std::to_string(old_file_.get());
      if (int const code = copy_extended_attributes(held, fd))
        return make_file_error("fsetxattr", path(), code);
    }
    // After the attributes, since a change of the owner takes capabilities away, and of an access
    // control list the mode of the group is a part.
    if (auto const wanted = target_.attributes(replaces()))
      target_.give_attributes(fd, made, *wanted);
    else if (replaces() && !target_.give_attributes(fd, made, old_))
      return output_.error("fchown");
    if (!replaces()) return std::nullopt;
    if (calls_.fstat(fd, &made) != 0) return output_.error("fstat");
    mode_t const mode = options_.attributes ? made.st_mode : old_.st_mode;
    if ((made.st_mode & 07777) != (mode & 07777)) return output_.error("fchmod");
    return std::nullopt;
  }

  int rename(unsigned flags) {
    open_place const& place = target_.place();
    return uninterrupted(
        [&] { return calls_.renameat2(place.folder(), temporary_.c_str(), place.name(), flags); });
  }

  std::optional<write_error> put_in_place() { return replaces() ? replace() : add(); }

  /// Under a name that can't have been taken meanwhile.
  std::optional<write_error> add() {
    open_place const& place = target_.place();
    int code = 0;
    uninterrupted([&] {
      code = platform::rename_to_new(place.folder(), temporary_.c_str(), place.name(), calls_);
      return errno = code, code == 0 ? 0 : -1;
    });
    if (code == 0) temporary_.clear();
    if (code == 0) return std::nullopt;
    if (code != EEXIST) return write_error{make_file_error("rename", path(), code)};
    return options_.known ? target_.changed(place.info()) : write_error{meddling(path(), true)};
  }

  /// What the new file can't have taken along: permissions are given and links made at any time.
  bool has_old_rights(struct stat const& info) const {
    return info.st_mode == old_.st_mode && info.st_uid == old_.st_uid &&
           info.st_gid == old_.st_gid && info.st_nlink == old_.st_nlink;
  }

  /// Exchanges both files, so that what has been replaced can be looked at, and put back if it is
  /// not the file that was held: another process has put another one there at the last moment.
  std::optional<write_error> replace() {
    if (!is_old_file(target_.place().info())) return somebody_elses();
    if (rename(RENAME_EXCHANGE) != 0) {
      if (!platform::is_unsupported_rename(errno))
        return write_error{make_file_error("rename", path(), errno)};
      if (rename(0) != 0) return write_error{make_file_error("rename", path(), errno)};
      temporary_.clear();
      return std::nullopt;
    }
    struct stat replaced;
    bool const looked =
        fstatat(target_.place().folder(), temporary_.c_str(), &replaced, AT_SYMLINK_NOFOLLOW) == 0;
    bool const is_old = !looked || is_old_file(replaced);
    if (is_old && (!looked || has_old_rights(replaced))) return std::nullopt;
    if (rename(RENAME_EXCHANGE) == 0)
      return is_old ? write_error{meddling(path(), false)} : somebody_elses();
    if (is_old) return std::nullopt;
    temporary_.clear();  // it is the only copy of what another process has written
    return write_error{meddling(path(), true)};
  }

  bool is_old_file(std::optional<struct stat> const& info) const {
    return info && S_ISREG(info->st_mode) && version_of(*info) == version_of(old_);
  }

  write_error somebody_elses() const {
    if (options_.known) return target_.changed(target_.place().info());
    return write_error{meddling(path(), true)};
  }

  std::optional<write_error> finish() {
    if (!temporary_.empty() && calls_.unlinkat(target_.place().folder(), temporary_.c_str()) == 0)
      temporary_.clear();
    platform::remove_left_over_temporaries(target_.place().folder(), target_.place().name(),
                                           calls_);
    auto const failure = target_.place().sync();
    if (!target_.is_at_path(made_)) return write_error{meddling(path(), true)};
    if (!failure) return std::nullopt;
    write_error error{*failure};
    error.is_in_place = true;
    return error;
  }

  write_options const& options_;
  file_system_calls& calls_;
  write_target target_;
  file_descriptor old_file_;
  file_output output_;
  std::string temporary_;  ///< the name of a file that is to be removed
  struct stat old_ {};
  struct stat made_ {};
};

}  // namespace

std::optional<write_error> write_atomically(std::string const& path, file_contents const& contents,
                                            write_options const& options,
                                            std::optional<file_version>& written,
                                            file_system_calls& calls) {
  return atomic_write(path, options, calls).run(contents, written);
}

std::optional<write_error> write_atomically(std::string const& path, file_contents const& contents,
                                            file_system_calls& calls) {
  std::optional<file_version> written;
  return write_atomically(path, contents, {}, written, calls);
}

}  // namespace path
