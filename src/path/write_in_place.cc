#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "path/file_output.h"
#include "path/write_target.h"

// The new bytes go over the old ones and the rest is cut off at the end, rather than the other way
// round: to truncate first would give the space back which has just been reserved, for another
// program to take, and would leave less behind if the writing fails.
//
// The size of the file says whether another process writes: before each piece of ours it must be
// what it was, or where our last piece ended.

namespace path {
namespace {

class in_place_write {
 public:
  in_place_write(std::string const& path, write_options const& options, file_system_calls& calls)
      : options_(options), calls_(calls), target_(path, options, calls), output_(calls) {}

  std::optional<write_error> run(file_contents const& contents,
                                 std::optional<file_version>& written) {
    if (auto refusal = target_.find()) return refusal;
    if (auto refusal = open()) return refusal;
    auto failure = reserve(contents.size);
    bool const unprotected =
        !failure && options_.protect && contents.size != 0 && (failure = options_.protect());
    if (failure) {
      release();
      return fail(*failure, unprotected);
    }
    if (!created_ && !is_untouched()) {
      // What has been reserved stays so: to give it back would cut what others have added.
      struct stat now = old_;
      calls_.fstat(output_.descriptor(), &now);
      if (options_.known) return target_.changed(now);
      return fail(meddling(target_.path(), false), false);
    }
    if (auto error = overwrite(contents)) return fail(*error, false);
    written = version_of(last_);
    return std::nullopt;
  }

 private:
  write_error fail(file_error const& failure, bool unprotected) {
    bool const gone = created_ && !complete_ && remove_created();
    bool const damaged = touched() && !gone && !complete_;
    if (locked_out_ && !touched()) set_mode(old_.st_mode);
    return write_error{failure, damaged, unprotected};
  }

  std::optional<write_error> open() {
    if (target_.info()) {
      if (auto failure = open_existing()) return write_error{*failure};
    } else if (auto failure = create()) {
      if (failure->code != EEXIST) return write_error{*failure};
      return options_.known ? target_.changed(target_.place().info())
                            : write_error{meddling(target_.path(), true)};
    }
    if (calls_.fstat(output_.descriptor(), &old_) != 0) return fail(output_.error("fstat"), false);
    after_reserving_ = old_;
    return created_ ? std::nullopt : target_.refusal(old_);
  }

  std::optional<file_error> open_existing() {
    open_place const& place = target_.place();
    auto const failure =
        output_.openat(place.folder(), place.name(), target_.path(), O_WRONLY | O_NOFOLLOW);
    bool const may_be_lent = failure && failure->code == EACCES && options_.even_read_only &&
                             !(target_.info()->st_mode & 0222);
    return may_be_lent ? open_with_lent_right() : failure;
  }

  /// The owner gets the right to write until the file is open. It is held fast meanwhile, so that
  /// nobody can put another one under the name.
  std::optional<file_error> open_with_lent_right() {
    open_place const& place = target_.place();
    file_descriptor file(calls_);
    if (int const code = file.openat(place.folder(), place.name(), O_PATH | O_NOFOLLOW))
      return make_file_error("open", target_.path(), code);
    struct stat info;
    if (calls_.fstat(file.get(), &info) != 0)
      return make_file_error("fstat", target_.path(), errno);
    if (!is_same_file(info, *target_.info())) return meddling(target_.path(), true);
    std::string const held = "/proc/self/fd/" + std::to_string(file.get());
    mode_t const mode = info.st_mode & 07777;
    auto const set = [&](mode_t m) {
      return uninterrupted([&] { return calls_.chmod(held.c_str(), m); });
    };
    if (set(mode | S_IWUSR) != 0) return make_file_error("chmod", target_.path(), errno);
    auto failure = output_.openat(AT_FDCWD, held, target_.path(), O_WRONLY);
    bool const restored = (!failure && uninterrupted([&] {
                                         return calls_.fchmod(output_.descriptor(), mode);
                                       }) == 0) ||
                          set(mode) == 0;
    if (!failure && !restored) failure = make_file_error("chmod", target_.path(), errno);
    return failure;
  }

  std::optional<file_error> create() {
    open_place const& place = target_.place();
    // Others must not read it before it has the permissions it is to have.
    mode_t const mode = target_.attributes(false) ? 0600 : 0666;
    auto failure = output_.openat(place.folder(), place.name(), target_.path(),
                                  O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    created_ = !failure;
    return failure;
  }

  bool remove_created() {
    auto const there = target_.place().info();
    struct stat own;
    return there && output_.descriptor() >= 0 && ::fstat(output_.descriptor(), &own) == 0 &&
           is_same_file(*there, own) &&
           calls_.unlinkat(target_.place().folder(), target_.place().name()) == 0;
  }

  /// Space for the whole file, holes of the old one included, without a change of its size.
  std::optional<file_error> reserve(std::uint64_t size) {
    auto const held = static_cast<std::uint64_t>(old_.st_blocks) * 512;
    if (size == 0 || (size <= static_cast<std::uint64_t>(old_.st_size) && size <= held))
      return std::nullopt;
    int const result = uninterrupted([&] {
      return calls_.fallocate(output_.descriptor(), FALLOC_FL_KEEP_SIZE, 0,
                              static_cast<off_t>(size));
    });
    file_error const failure = output_.error("fallocate");
    if (calls_.fstat(output_.descriptor(), &after_reserving_) != 0) return output_.error("fstat");
    bool const no_room = failure.code == ENOSPC || failure.code == EDQUOT ||
                         failure.code == EFBIG || failure.code == EIO;
    if (result == 0 || !no_room) return std::nullopt;  // else the file system can't reserve
    return failure;
  }

  /// Gives back what may have been reserved; the file looks untouched afterwards. Where others have
  /// written to it nothing is done.
  void release() {
    if (created_ || !is_untouched()) return;
    // Neither result matters: the bytes are the old ones in any case.
    if (after_reserving_.st_blocks != old_.st_blocks)
      calls_.ftruncate(output_.descriptor(), old_.st_size);
    struct stat now;
    if (calls_.fstat(output_.descriptor(), &now) != 0 || now.st_size != old_.st_size ||
        nanoseconds(now.st_mtim) == nanoseconds(old_.st_mtim))
      return;
    timespec const times[2] = {old_.st_atim, old_.st_mtim};
    calls_.futimens(output_.descriptor(), times);
  }

  /// Whether no process has written since the file was opened. To reserve space may have dated it.
  bool is_untouched() {
    struct stat now;
    return calls_.fstat(output_.descriptor(), &now) == 0 && now.st_size == old_.st_size &&
           version_of(now) == version_of(after_reserving_);
  }

  std::uint64_t size_before() const { return static_cast<std::uint64_t>(old_.st_size); }

  /// Whether the size is what it must be if only this wrote.
  std::optional<file_error> look() {
    struct stat now;
    if (calls_.fstat(output_.descriptor(), &now) != 0) return output_.error("fstat");
    if (static_cast<std::uint64_t>(now.st_size) == std::max(size_before(), output_.bytes_written()))
      return std::nullopt;
    return meddling(target_.path(), false);
  }

  std::optional<file_error> overwrite(file_contents const& contents) {
    if (auto failure = lock_out_others()) return failure;
    if (auto failure = output_.write(contents, [this] { return look(); })) return failure;
    if (auto failure = look()) return failure;
    if (size_before() > contents.size) {
      truncating_ = true;
      int const result = uninterrupted([&] {
        return calls_.ftruncate(output_.descriptor(), static_cast<off_t>(contents.size));
      });
      if (result != 0) return output_.error("ftruncate");
    }
    if (auto const& wanted = target_.attributes(!created_))
      target_.give_attributes(output_.descriptor(), old_, *wanted);
    else
      restore_marks();
    if (has_hole(contents)) return meddling(target_.path(), false);
    if (auto failure = output_.sync()) return failure;
    if (calls_.fstat(output_.descriptor(), &last_) != 0) return output_.error("fstat");
    if (static_cast<std::uint64_t>(last_.st_size) != contents.size)
      return meddling(target_.path(), false);
    bool const is_there = target_.is_at_path(last_);
    if (auto failure = output_.close()) return failure;
    complete_ = true;
    if (!is_there) return meddling(target_.path(), true);
    return created_ ? target_.place().sync() : std::nullopt;
  }

  /// Writing takes away marks that lend the owner's rights. Whatever else has become of the mode
  /// somebody has done meanwhile, perhaps to lock others out.
  void restore_marks() {
    constexpr mode_t marks = S_ISUID | S_ISGID;
    struct stat now;
    if (calls_.fstat(output_.descriptor(), &now) != 0 || now.st_mode == old_.st_mode ||
        now.st_uid != old_.st_uid || now.st_gid != old_.st_gid ||
        (now.st_mode | (old_.st_mode & marks)) != old_.st_mode)
      return;
    set_mode(old_.st_mode);
  }

  /// Nobody is to read the new bytes who may not do so when the file has the permissions that it is
  /// to have. Whoever isn't its owner can't see to that.
  std::optional<file_error> lock_out_others() {
    auto const& wanted = target_.attributes(true);
    if (created_ || !wanted) return std::nullopt;
    mode_t const mode = old_.st_mode & (wanted->st_mode | ~mode_t{0077});
    locked_out_ = mode != old_.st_mode && set_mode(mode);
    if (mode == old_.st_mode || locked_out_ || errno == EPERM) return std::nullopt;
    return output_.error("fchmod");
  }

  bool set_mode(mode_t mode) {
    return uninterrupted([&] { return calls_.fchmod(output_.descriptor(), mode & 07777); }) == 0;
  }

  /// Whether the file has a hole where something was written: it was cut between two pieces, or
  /// before our own cut.
  bool has_hole(file_contents const& contents) const {
    off_t const hole = ::lseek(output_.descriptor(), 0, SEEK_HOLE);
    if (hole < 0 || static_cast<std::uint64_t>(hole) >= contents.size) return false;
    // Some file systems make holes of zeros.
    std::uint64_t begin = 0;
    bool is_zero = false;
    contents.produce([&](unsigned char const* bytes, std::size_t size) {
      std::uint64_t const offset = static_cast<std::uint64_t>(hole) - begin;
      if (offset < size) is_zero = bytes[offset] == 0;
      begin += size;
      return offset >= size;
    });
    return !is_zero;
  }

  bool touched() const { return output_.bytes_written() != 0 || truncating_; }

  write_options const& options_;
  file_system_calls& calls_;
  write_target target_;
  file_output output_;
  struct stat old_ {};
  struct stat after_reserving_ {};
  struct stat last_ {};
  bool created_ = false;
  bool truncating_ = false;
  bool locked_out_ = false;
  bool complete_ = false;
};

}  // namespace

std::optional<write_error> write_in_place(std::string const& path, file_contents const& contents,
                                          write_options const& options,
                                          std::optional<file_version>& written,
                                          file_system_calls& calls) {
  return in_place_write(path, options, calls).run(contents, written);
}

std::optional<write_error> write_in_place(std::string const& path, file_contents const& contents,
                                          file_system_calls& calls) {
  std::optional<file_version> written;
  return write_in_place(path, contents, {}, written, calls);
}

}  // namespace path
