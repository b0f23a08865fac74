#include "path/write_target.h"

#include <fcntl.h>

#include <cerrno>

#include "path/file_output.h"
#include "path/file_reader.h"

namespace path {

file_error meddling(std::string const& path, bool replaced) {
  return {"write", path, EBUSY,
          replaced ? "Another program has moved it or put something else in its place meanwhile"
                   : "Another program has written to it at the same time"};
}

file_error leads_elsewhere(std::string const& path) {
  return {"open", path, ELOOP,
          "Its name leads to another file now, by a link that was not there when it was opened"};
}

std::optional<write_error> write_target::find() {
  if (auto failure = place_.open(path_)) return write_error{*failure};
  info_ = place_.info();
  if (!info_ && errno != ENOENT) return write_error{make_file_error("stat", path_, errno)};
  if (options_.known && options_.known->place &&
      !place_.place().is_reached_as(*options_.known->place))
    return write_error{leads_elsewhere(path_)};
  return refusal(info_);
}

write_error write_target::changed(std::optional<struct stat> const& info) const {
  write_error error{{"open", path_, EBUSY, "Another program has changed it"}};
  error.changed = true;
  if (info) error.found = version_of(*info);
  return error;
}

std::optional<write_error> write_target::refusal(std::optional<struct stat> const& info) const {
  if (!info) return std::nullopt;  // to make it again takes nothing away
  if (S_ISLNK(info->st_mode)) return write_error{meddling(path_, true)};
  auto const reason = options_.even_read_only ? refusal_of_kind(path_, info->st_mode)
                                              : refusal_to_write(path_, info->st_mode);
  if (reason) return write_error{*reason};
  if (options_.known && options_.known->version != version_of(*info)) return changed(info);
  return std::nullopt;
}

bool write_target::is_at_path(struct stat const& file) const {
  struct stat now;
  return ::stat(path_.c_str(), &now) == 0 && is_same_file(now, file);
}

bool write_target::is_as_found() const {
  auto const now = place_.info();
  return now.has_value() == info_.has_value() && (!now || version_of(*now) == version_of(*info_));
}

// The owner first, since a change of it takes bits out of the mode. Only root may give files away
// and only members a group.
bool write_target::give_attributes(int fd, struct stat const& present,
                                   struct stat const& wanted) const {
  bool kept = true;
  auto const set_owner = [&](uid_t owner, gid_t group) {
    kept &= uninterrupted([&] { return calls_.fchown(fd, owner, group); }) == 0;
  };
  if (present.st_gid != wanted.st_gid) set_owner(static_cast<uid_t>(-1), wanted.st_gid);
  if (present.st_uid != wanted.st_uid) set_owner(wanted.st_uid, static_cast<gid_t>(-1));
  int const code = errno;
  struct stat now;
  mode_t const mode = wanted.st_mode & (kept ? 07777 : 0777);
  // Writing and a change of the owner may have taken bits away, and a new file has none.
  if (calls_.fstat(fd, &now) == 0 && (now.st_mode & 07777) != mode)
    uninterrupted([&] { return calls_.fchmod(fd, mode); });
  errno = code;
  return kept;
}

}  // namespace path
