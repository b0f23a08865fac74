#include "bundles/item_file.h"

#include "path/file_writer.h"
#include "platform/desktop.h"
#include "platform/replace_file.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <random>
#include <set>

namespace bundles {

namespace fs = std::filesystem;

void complain(std::string const& message) {
  static std::mutex mutex;
  static std::set<std::string> told;
  std::lock_guard const lock(mutex);
  if (told.insert(message).second) std::fprintf(stderr, "Quirnote: %s\n", message.c_str());
}

plist::value read_dictionary(std::string const& path) {
  std::string bytes;
  if (int const error = platform::read_file(path, bytes, platform::file_calls::system())) {
    complain(path + ": " + std::strerror(error));
    return {};
  }
  plist::read_result read = plist::read_xml(bytes);
  if (read.error) {
    complain(path + ":" + std::to_string(read.error->line) + ":" +
             std::to_string(read.error->column) + ": " + read.error->message);
    return {};
  }
  if (!read.value.as_dictionary()) {
    complain(path + ": the property list is no dictionary");
    return {};
  }
  return std::move(read.value);
}

bool write_dictionary(std::string const& path, plist::dictionary const& content) {
  plist::write_result const written = plist::write_xml(content);
  if (written.error) {
    complain(path + ": " + *written.error);
    return false;
  }
  return write_file(path, written.text);
}

bool write_file(std::string const& path, std::string_view bytes) {
  auto const contents = path::contents_of(bytes);
  auto error = path::write_atomically(path, contents);
  // Others may share it: a file of another owner, or one that has several names.
  if (error && (error->code == EPERM || error->code == EMLINK))
    error = path::write_in_place(path, contents);
  if (error) complain(path + ": " + error->message);
  return !error;
}

std::vector<std::string> string_array(plist::value const& dictionary, std::string_view key) {
  std::vector<std::string> result;
  for (plist::value const& element : dictionary[key].elements())
    if (auto const* text = element.as_string()) result.push_back(*text);
  return result;
}

namespace {

constexpr off_t largest_copied_file = off_t{256} << 20;  // bytes

[[noreturn]] void fail(fs::path const& path) {
  throw fs::filesystem_error("", path, std::error_code(errno, std::generic_category()));
}

void copy_bytes(path::file_descriptor& from, path::file_descriptor& to, fs::path const& path) {
  std::vector<char> buffer(1 << 16);
  for (;;) {
    ssize_t const count =
        path::uninterrupted([&] { return ::read(from.get(), buffer.data(), buffer.size()); });
    if (count < 0) fail(path);
    if (count == 0) return;
    for (ssize_t done = 0; done < count;) {
      ssize_t const written = path::uninterrupted([&] {
        return ::write(to.get(), buffer.data() + done, static_cast<std::size_t>(count - done));
      });
      if (written <= 0) fail(path);
      done += written;
    }
  }
}

/// Without the marks by which a program gets the rights of its owner.
void copy_regular_file(fs::path const& from, fs::path const& to) {
  auto& calls = path::file_system_calls::system();
  path::file_descriptor in(calls), out(calls);
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
    complain(entry->path().string() + ": a link that leads out of the bundle is left out");
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
    complain(error.path1().string() + ": " + error.code().message());
    return false;
  }
}

void remove_tree(std::string const& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

std::vector<std::string> visible_names(std::string const& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (auto it = fs::directory_iterator(folder, error); !error && it != fs::directory_iterator();
       it.increment(error)) {
    std::string name = it->path().filename().string();
    if (name.front() != '.') names.push_back(std::move(name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string stringWithUUID() {
  std::random_device random;
  std::uniform_int_distribution<int> digit(0, 15);
  std::string result = "xxxxxxxx-xxxx-4xxx-Nxxx-xxxxxxxxxxxx";
  for (char& c : result) {
    if (c == 'x') c = "0123456789ABCDEF"[digit(random)];
    if (c == 'N') c = "89AB"[digit(random) & 3];
  }
  return result;
}

void beep() {
  if (auto* const desktop = platform::desktop::current_or_null()) desktop->beep();
}

}  // namespace bundles
