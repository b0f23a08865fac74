#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "path/file_output.h"

// The new bytes go over the old ones and the rest is cut off at the end, rather than the other way
// round: to truncate first would give the space back which has just been reserved, for another
// program to take, and would leave less behind if the writing fails.

namespace path {
namespace {

class in_place_write {
 public:
  in_place_write(std::string const& path, file_system_calls& calls)
      : path_(path), calls_(calls), output_(calls) {}

  std::optional<write_error> run(file_contents const& contents, protection const& protect) {
    auto failure = open();
    if (!failure) failure = reserve(contents.size);
    bool const unprotected = !failure && protect && contents.size != 0 && (failure = protect());
    if (unprotected) release();
    if (!failure) failure = overwrite(contents);
    if (!failure) return std::nullopt;
    bool const gone = created_ && !complete_ && calls_.unlink(path_.c_str()) == 0;
    bool const damaged = touched() && !gone && !(created_ && complete_);
    return write_error{*failure, damaged, unprotected};
  }

 private:
  std::optional<file_error> open() {
    struct stat before;
    if (::stat(path_.c_str(), &before) == 0)
      if (auto refusal = refusal_to_write(path_, before.st_mode)) return refusal;
    auto failure = output_.open(path_, O_WRONLY);
    if (failure && failure->code == ENOENT) {
      failure = output_.open(path_, O_WRONLY | O_CREAT | O_EXCL, 0666);
      created_ = !failure;
      // A link that leads nowhere exists, and is written through.
      if (failure && failure->code == EEXIST)
        failure = output_.open(path_, O_WRONLY | O_CREAT, 0666);
    }
    if (failure) return failure;
    if (calls_.fstat(output_.descriptor(), &old_) != 0) return output_.error("fstat");
    return created_ ? std::nullopt : refusal_to_write(path_, old_.st_mode);
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
    bool const no_room = errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO;
    if (result == 0 || !no_room) return std::nullopt;  // else the file system can't reserve
    file_error const failure = output_.error("fallocate");
    release();
    return failure;
  }

  /// Gives back what may have been reserved; the file looks untouched afterwards.
  void release() {
    // Neither result matters: the bytes are the old ones in any case.
    calls_.ftruncate(output_.descriptor(), old_.st_size);
    timespec const times[2] = {old_.st_atim, old_.st_mtim};
    calls_.futimens(output_.descriptor(), times);
  }

  std::optional<file_error> overwrite(file_contents const& contents) {
    if (auto failure = output_.write(contents)) return failure;
    if (static_cast<std::uint64_t>(old_.st_size) > contents.size) {
      truncating_ = true;
      int const result = uninterrupted([&] {
        return calls_.ftruncate(output_.descriptor(), static_cast<off_t>(contents.size));
      });
      if (result != 0) return output_.error("ftruncate");
    }
    if (auto failure = output_.sync()) return failure;
    if (auto failure = output_.close()) return failure;
    complete_ = true;
    return created_ ? sync_folder_of(path_, calls_) : std::nullopt;
  }

  bool touched() const { return output_.bytes_written() != 0 || truncating_; }

  std::string const& path_;
  file_system_calls& calls_;
  file_output output_;
  struct stat old_ {};
  bool created_ = false;
  bool truncating_ = false;
  bool complete_ = false;
};

}  // namespace

std::optional<write_error> write_in_place(std::string const& path, file_contents const& contents,
                                          file_system_calls& calls) {
  return in_place_write(path, calls).run(contents, nullptr);
}

std::optional<write_error> write_in_place_protected(std::string const& path,
                                                    file_contents const& contents,
                                                    protection const& protect,
                                                    file_system_calls& calls) {
  return in_place_write(path, calls).run(contents, protect);
}

}  // namespace path
