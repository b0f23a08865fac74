#include "path/tree.h"

#include "path/entries.h"
#include "path/file_writer.h"
#include "platform/log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace path {

namespace fs = std::filesystem;

namespace {

constexpr off_t largest_copied_file = off_t{256} << 20;  // bytes

[[noreturn]] void fail(fs::path const& path) {
  throw fs::filesystem_error("", path, std::error_code(errno, std::generic_category()));
}

void copy_bytes(file_descriptor& from, file_descriptor& to, fs::path const& path) {
  std::vector<char> buffer(1 << 16);
  for (;;) {
    ssize_t const count =
        uninterrupted([&] { return ::read(from.get(), buffer.data(), buffer.size()); });
    if (count < 0) fail(path);
    if (count == 0) return;
    for (ssize_t done = 0; done < count;) {
      ssize_t const written = uninterrupted([&] {
        return ::write(to.get(), buffer.data() + done, static_cast<std::size_t>(count - done));
      });
      if (written <= 0) fail(path);
      done += written;
    }
  }
}

/// Without the marks by which a program gets the rights of its owner.
void copy_regular_file(fs::path const& from, fs::path const& to) {
  auto& calls = file_system_calls::system();
  file_descriptor in(calls), out(calls);
  errno = in.open(from.string(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  struct stat info;
  if (errno || fstat(in.get(), &info) != 0) fail(from);
  errno = !S_ISREG(info.st_mode) ? EINVAL : info.st_size > largest_copied_file ? EFBIG : 0;
  if (errno) fail(from);
  errno = out.open(to.string(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, info.st_mode & 0777);
  if (errno) fail(to);
  copy_bytes(in, out, to);
  if ((errno = out.close())) fail(to);
}

void copy_entry(fs::path const& from, fs::path const& to, bool skip_hidden) {
  fs::file_status const status = fs::symlink_status(from);
  if (fs::is_symlink(status)) return fs::copy_symlink(from, to);
  if (!fs::is_directory(status)) {
    // What is neither, such as a named pipe, has no content to be copied.
    if (fs::is_regular_file(status)) copy_regular_file(from, to);
    return;
  }
  fs::create_directory(to);
  for (fs::directory_entry const& entry : fs::directory_iterator(from)) {
    std::string const name = entry.path().filename().string();
    if (!skip_hidden || name.front() != '.') copy_entry(entry.path(), to / name, skip_hidden);
  }
}

/// Looked at where the copies stand, as a link may lead through another one.
void remove_links_that_lead_outside(fs::path const& folder) {
  std::string const root = fs::canonical(folder).string() + "/";
  for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
    if (!entry->is_symlink()) continue;
    std::error_code error;
    fs::path const target = fs::canonical(entry->path(), error);
    if (!error && fs::read_symlink(entry->path()).is_relative() &&
        (target.string() + "/").starts_with(root))
      continue;
    platform::log_once(entry->path().string() +
                       ": a link that leads out of the bundle is left out");
    fs::remove(entry->path());
  }
}

}  // namespace

bool copy_tree(std::string const& from, std::string const& to, bool skip_hidden) {
  try {
    copy_entry(from, to, skip_hidden);
    if (fs::is_directory(fs::symlink_status(to))) remove_links_that_lead_outside(to);
    return true;
  } catch (fs::filesystem_error const& error) {
    platform::log_once(error.path1().string() + ": " + error.code().message());
    return false;
  }
}

void remove_tree(std::string const& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

std::vector<std::string> visible_names(std::string const& folder) {
  std::vector<std::string> names;
  for (dirent const* entry : entries(folder))
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace path
