#include "documents/safety_copy.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <ctime>
#include <random>
#include <string_view>

#include "documents/folder_in_tmp.h"
#include "documents/printable_name.h"
#include "path/entries.h"
#include "path/file_output.h"
#include "path/file_reader.h"
#include "path/file_system.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/rename_to_new.h"
#include "platform/system/temporary_files.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"

namespace documents {
namespace {

constexpr std::string_view prefix = "SafetyCopy-", unfinished = ".part";
constexpr std::string_view first_words = "Quirnote safety copy ";
constexpr std::size_t header_limit = 65536;  // bytes; the longest path takes a tenth of it

std::optional<path::file_error> failure(char const* operation, std::string const& path) {
  return path::make_file_error(operation, path, errno);
}

/// A folder for safety copies, made if need be. No other user can enter it or has
/// made it.
std::optional<path::file_error> prepare(std::string const& folder, path::file_system_calls& calls) {
  std::vector<std::string> missing;
  for (std::string at = folder; access(at.c_str(), F_OK) != 0 && errno == ENOENT && at != ".";
       at = platform::folder_of(at))
    missing.push_back(at);
  if (!platform::make_folders(folder))
    return path::make_file_error("mkdir", folder, errno == EEXIST ? ENOTDIR : errno);
  path::file_descriptor opened(calls);
  if (int const code = opened.open(folder, O_RDONLY | O_DIRECTORY))
    return path::make_file_error("open", folder, code);
  struct stat info;
  if (calls.fstat(opened.get(), &info) != 0) return failure("fstat", folder);
  if (info.st_uid != geteuid()) return path::make_file_error("open", folder, EPERM);
  if ((info.st_mode & 07777) != 0700 && calls.fchmod(opened.get(), 0700) != 0)
    return failure("fchmod", folder);
  for (std::string const& made : missing)
    if (auto error = path::sync_folder_of(made, calls)) return error;
  return std::nullopt;
}

std::string header_of(safety_copy_origin const& origin) {
  encoding::file_format const& format = origin.format;
  plist::dictionary values = {
      {"path", plist::data(origin.path.begin(), origin.path.end())},
      {"title", printable(origin.title)},
      {"date", origin.date},
      {"overwrites", origin.overwrites},
      {"charset", std::int64_t{format.charset}},
      {"lineEnding", std::int64_t{format.line_ending}},
      {"byteOrderMark", format.byte_order_mark},
      {"pairs", format.pairs},
  };
  if (origin.charset_of_file)
    values.emplace("charsetOfFile", std::int64_t{*origin.charset_of_file});
  std::string const list = plist::write_xml(values).text;
  return std::string(first_words) + std::to_string(list.size()) + "\n" + list;
}

/// Locks a copy, which may have been found to be in use: EWOULDBLOCK. Where files can't be locked
/// that is no error.
int lock(path::file_descriptor const& file) {
  int const result = path::uninterrupted([&] { return flock(file.get(), LOCK_EX | LOCK_NB); });
  return result != 0 && errno == EWOULDBLOCK ? errno : 0;
}

file_date now() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

std::string unused_name(std::string const& folder) {
  static std::mt19937_64 random(std::random_device{}());
  return folder + "/" + std::string(prefix) + std::to_string(random());
}

/// Opens and locks the copy at `path`, if it is one of ours that no process holds.
std::unique_ptr<path::file_descriptor> take(std::string const& path, struct stat& info) {
  auto file = std::make_unique<path::file_descriptor>(path::file_system_calls::system());
  if (file->open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY) != 0) return nullptr;
  if (lock(*file) != 0) return nullptr;
  // Looked at under the lock: it may just have been removed by the program that held it.
  if (fstat(file->get(), &info) != 0 || !S_ISREG(info.st_mode)) return nullptr;
  bool const ours = info.st_uid == geteuid() && info.st_nlink == 1;
  return ours ? std::move(file) : nullptr;
}

std::vector<std::string> names_in(std::string const& folder) {
  std::vector<std::string> result;
  for (dirent const* entry : path::entries(folder))
    if (std::string_view(entry->d_name).starts_with(prefix)) result.emplace_back(entry->d_name);
  return result;
}

bool folder_is_ours(std::string const& folder) {
  struct stat info;
  return stat(folder.c_str(), &info) == 0 && info.st_uid == geteuid();
}

/// Root's own where it works with the settings of another user, who could change what is kept in
/// his.
std::string own_state_folder() {
  std::string const folder = platform::state_folder();
  if (geteuid() != 0) return folder;
  struct stat info;
  std::string nearest = folder;
  while (stat(nearest.c_str(), &info) != 0 && nearest != "/")
    nearest = platform::folder_of(nearest);
  return info.st_uid == 0 ? folder : path::home() + "/.local/state/Quirnote";
}

std::vector<std::string> private_folders() {
  std::vector<std::string> result = {own_state_folder()};
  if (auto const folder = platform::runtime_folder()) result.push_back(*folder);
  result.push_back(platform::cache_folder());
  return result;
}

constexpr int most_beside = 9;

/// The nth name for a copy in the file's own folder.
std::string name_beside(std::string const& path, int n) {
  std::string const name = path.substr(path.rfind('/') + 1, 200);
  return platform::folder_of(path) + "/." + name + ".quirnote-unsaved" +
         (n == 0 ? "" : "-" + std::to_string(n + 1));
}

/// Of what takes the place `path` when it is whole.
void remove_unfinished(std::string const& path) {
  path::file_descriptor file(path::file_system_calls::system());
  if (file.open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY) == 0 &&
      platform::is_left_over(file.get()))
    unlink(path.c_str());
}

/// Leads to the open file, whatever others have put under its name since.
std::string path_of(path::file_descriptor const& file) {
  return "/proc/self/fd/" + std::to_string(file.get());
}

/// Reads on from where both are, to the end.
bool rest_is_equal(path::file_reader& a, path::file_reader& b) {
  std::vector<char> left(1 << 16), right(1 << 16);
  for (;;) {
    auto const x = a.read(left.data(), left.size()), y = b.read(right.data(), right.size());
    if (x.error || y.error || x.bytes != y.bytes) return false;
    if (!std::equal(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(x.bytes),
                    right.begin()))
      return false;
    if (x.bytes < left.size()) return true;
  }
}

}  // namespace

safety_copy::safety_copy(std::string file, std::unique_ptr<path::file_descriptor> lock)
    : file_(std::move(file)), lock_(std::move(lock)) {}

safety_copy::safety_copy(safety_copy&&) noexcept = default;
safety_copy& safety_copy::operator=(safety_copy&&) noexcept = default;
safety_copy::~safety_copy() = default;

std::optional<path::file_error> safety_copy::create(safety_copy_origin origin,
                                                    path::file_contents const& contents,
                                                    std::optional<safety_copy>& copy,
                                                    path::file_system_calls& calls) {
  std::string const folder = own_state_folder();
  if (auto error = prepare(folder, calls)) return error;
  return create_as(unused_name(folder), std::move(origin), contents, copy, calls);
}

std::optional<path::file_error> safety_copy::create_anywhere(safety_copy_origin const& origin,
                                                             path::file_contents const& contents,
                                                             std::optional<safety_copy>& copy,
                                                             path::file_system_calls& calls) {
  std::optional<path::file_error> first;
  auto const succeeds = [&](std::optional<path::file_error> const& error) {
    if (error && !first) first = error;
    return !error;
  };
  auto const goes_into = [&](std::string const& folder) {
    return succeeds(prepare(folder, calls)) &&
           succeeds(create_as(unused_name(folder), origin, contents, copy, calls));
  };
  for (std::string const& folder : private_folders())
    if (goes_into(folder)) return std::nullopt;
  for (int n = 0; n <= most_beside && !origin.path.empty(); ++n) {
    std::string const name = name_beside(origin.path, n);
    remove_unfinished(name + std::string(unfinished));
    auto const error = create_as(name, origin, contents, copy, calls);
    if (succeeds(error)) return std::nullopt;
    if (error->code != EEXIST) break;
  }
  std::string const last = make_folder_in_tmp();
  return !last.empty() && goes_into(last) ? std::nullopt : first;
}

std::optional<path::file_error> safety_copy::create_as(std::string const& name,
                                                       safety_copy_origin origin,
                                                       path::file_contents const& contents,
                                                       std::optional<safety_copy>& copy,
                                                       path::file_system_calls& calls) {
  origin.date = now();
  std::string const header = header_of(origin);
  path::file_contents const all{header.size() + contents.size, [&](path::byte_sink const& sink) {
                                  auto const* bytes =
                                      reinterpret_cast<unsigned char const*>(header.data());
                                  return sink(bytes, header.size()) && contents.produce(sink);
                                }};

  std::string const part = name + std::string(unfinished);
  path::file_output output(calls);
  if (auto error = output.open(part, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600)) return error;
  auto const finish = [&]() -> std::optional<path::file_error> {
    auto held = std::make_unique<path::file_descriptor>(calls);
    if (int const code = held->open(part, O_RDONLY | O_NOFOLLOW))
      return path::make_file_error("open", part, code);
    if (lock(*held) != 0) return failure("flock", part);
    if (auto error = output.write(all)) return error;
    if (auto error = output.sync()) return error;
    if (auto error = output.close()) return error;
    // Another program may have put a copy of its own there since the last look.
    if (int const code = platform::rename_to_new(AT_FDCWD, part.c_str(), name.c_str(), calls))
      return path::make_file_error("rename", name, code);
    if (auto error = path::sync_folder_of(name, calls)) {
      calls.unlink(name.c_str());
      return error;
    }
    copy = safety_copy(name, std::move(held));
    copy->origin_ = std::move(origin);
    copy->header_size_ = header.size();
    return std::nullopt;
  };
  auto const error = finish();
  if (error) calls.unlink(part.c_str());
  return error;
}

bool safety_copy::read_header() {
  path::file_reader reader;
  if (reader.open(path_of(*lock_))) return false;
  std::string head(header_limit, '\0');
  auto const result = reader.read(head.data(), head.size());
  if (result.error) return false;
  head.resize(result.bytes);
  if (!head.starts_with(first_words)) return false;
  std::size_t size = 0;
  auto const [end, code] =
      std::from_chars(head.data() + first_words.size(), head.data() + head.size(), size);
  auto const begin = static_cast<std::size_t>(end - head.data()) + 1;
  if (code != std::errc() || begin > head.size() || *end != '\n' || size > head.size() - begin)
    return false;
  plist::value const values = plist::read_xml(head.substr(begin, size)).value;
  auto const* path = values["path"].as_data();
  auto const charset = encoding::charset_of_number(values["charset"].integer_or(-1));
  auto const ends = values["lineEnding"].integer_or(-1);
  if (!path || !charset || ends < line_ending::LF || ends > line_ending::CRLF) return false;
  origin_.path.assign(path->begin(), path->end());
  origin_.title = values["title"].string_or("");
  origin_.overwrites = values["overwrites"].boolean_or(true);
  origin_.date = values["date"].integer_or(0);
  origin_.format = {*charset, static_cast<line_ending::type>(ends),
                    values["byteOrderMark"].boolean_or(false), values["pairs"].boolean_or(true)};
  origin_.charset_of_file = encoding::charset_of_number(values["charsetOfFile"].integer_or(-1));
  header_size_ = begin + size;
  return true;
}

std::optional<safety_copy> safety_copy::found_at(std::string const& path) {
  struct stat info;
  auto file = take(path, info);
  if (!file) return std::nullopt;
  safety_copy copy(path, std::move(file));
  if (copy.read_header()) return copy;
  platform::log(path + " is no safety copy");
  return std::nullopt;
}

std::vector<safety_copy> safety_copy::left_over() {
  std::vector<safety_copy> result;
  auto folders = private_folders();
  for (std::string& folder : folders_in_tmp()) folders.push_back(std::move(folder));
  for (std::string const& folder : folders) {
    if (!folder_is_ours(folder)) continue;
    for (std::string const& name : names_in(folder)) {
      std::string const path = folder + "/" + name;
      if (name.ends_with(unfinished))
        remove_unfinished(path);
      else if (auto copy = found_at(path))
        result.push_back(std::move(*copy));
    }
  }
  std::sort(result.begin(), result.end(),
            [](auto const& a, auto const& b) { return a.origin_.date < b.origin_.date; });
  return result;
}

std::vector<safety_copy> safety_copy::left_over_beside(std::string const& path) {
  std::vector<safety_copy> result;
  for (int n = 0; n <= most_beside; ++n) {
    remove_unfinished(name_beside(path, n) + std::string(unfinished));
    auto copy = found_at(name_beside(path, n));
    if (copy && copy->origin_.path == path) result.push_back(std::move(*copy));
  }
  return result;
}

std::string safety_copy::name() const {
  return origin_.path.empty() ? printable(origin_.title) : printable_name(origin_.path);
}

std::optional<path::file_error> safety_copy::read(file_text& text) const {
  return read_file_text(path_of(*lock_), origin_.format.charset, origin_.format.pairs, text,
                        header_size_);
}

bool safety_copy::is_in_place() const {
  if (origin_.path.empty()) return false;
  auto& calls = path::file_system_calls::system();
  path::file_reader copy, file;
  if (copy.open(path_of(*lock_)) || file.open(origin_.path)) return false;
  std::string header(header_size_, '\0');
  copy.read(header.data(), header.size());
  if (copy.info().st_size - static_cast<off_t>(header_size_) != file.info().st_size) return false;
  if (!rest_is_equal(copy, file)) return false;
  path::file_descriptor opened(calls);
  return opened.open(origin_.path, O_RDONLY | O_NONBLOCK) == 0 && calls.fsync(opened.get()) == 0;
}

void safety_copy::remove() {
  unlink(file_.c_str());
}

}  // namespace documents
