#include "documents/privileged_save.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "documents/printable_name.h"
#include "path/file_output.h"
#include "path/file_place.h"
#include "path/path.h"
#include "path/write_target.h"
#include "platform/desktop.h"
#include "platform/library_folders.h"
#include "platform/run_program.h"
#include "privileged/write_file_status.h"

namespace documents {
namespace {

constexpr double seconds_for_the_password = 300;

/// Without links, "" if it can't be told.
std::string real_path(std::string const& path) {
  std::unique_ptr<char, void (*)(void*)> const real(realpath(path.c_str(), nullptr), std::free);
  return real ? real.get() : "";
}

/// The file as the program that writes it is told of it: where it is, links followed, and which
/// version of it may be overwritten. That program compares both and follows no link.
struct target {
  std::string path, identity;
  std::optional<path::file_version> version;
};

std::optional<target> target_at(std::string const& path) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0) {
    if (errno != ENOENT) return std::nullopt;
    std::string const folder = real_path(path::parent(path));
    if (folder.empty()) return std::nullopt;
    return target{path::join(folder, path::name(path)), "new", std::nullopt};
  }
  std::string const real = real_path(path);
  if (real.empty() || lstat(real.c_str(), &info) != 0 || !S_ISREG(info.st_mode))
    return std::nullopt;
  auto const version = path::version_of(info);
  auto const text = [](auto number) { return std::to_string(number); };
  return target{real,
                text(version.device) + ":" + text(version.inode) + ":" + text(version.size) + ":" +
                    text(version.modified),
                version};
}

/// The first part of the path, whose links have been followed, that somebody other than root may
/// change; "" if none. Whoever changes the program that writes gets the rights that are asked for.
std::string changeable_by_others(std::string const& program) {
  for (std::size_t end = 0; end != program.npos;) {
    end = program.find('/', end + 1);
    std::string const part = program.substr(0, end);
    struct stat info;
    if (lstat(part.c_str(), &info) != 0 || info.st_uid != 0 || (info.st_mode & 022)) return part;
  }
  return "";
}

/// An error, by which nothing was written, if this is not the file that the user knows.
std::optional<path::write_error> refusal_of(target const& target, save_request const& request) {
  auto const& known = request.options.known;
  if (!known) return std::nullopt;
  if (known->place) {
    auto const place = path::place_of(request.path);
    if (!place || !place->is_reached_as(*known->place) || place->target != target.path)
      return path::write_error{path::leads_elsewhere(request.path)};
  }
  if (!target.version || target.version == known->version) return std::nullopt;
  path::write_error changed{{"open", request.path, EBUSY, "Another program has changed it"}};
  changed.changed = true;
  changed.found = target.version;
  return changed;
}

std::optional<path::file_version> version_at(std::string const& path) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0) return std::nullopt;
  return path::version_of(info);
}

/// The contents in memory, open and not to be changed, or -1. A pipe instead would have to be
/// served while the user looks for the password.
int open_contents(path::file_contents const& contents) {
  int const fd = memfd_create("quirnote-save", MFD_CLOEXEC | MFD_ALLOW_SEALING);
  if (fd < 0) return -1;
  path::file_output output(path::file_system_calls::system());
  bool const written = !output.open("/proc/self/fd/" + std::to_string(fd), O_WRONLY) &&
                       !output.write(contents) && !output.close();
  constexpr int seals = F_SEAL_SEAL | F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;
  if (written && fcntl(fd, F_ADD_SEALS, seals) == 0) return fd;
  close(fd);
  return -1;
}

/// What stands in "quirnote-write-file: write: No space left on device" at the end.
std::string reason_in(std::string message) {
  message.erase(message.find_last_not_of('\n') + 1);
  auto const colon = message.rfind(": ");
  return colon == message.npos ? message : message.substr(colon + 2);
}

/// Runs the program, by which the file at the target gets the bytes of the open file `input`.
std::optional<path::write_error> write_to(target const& target, std::string const& program,
                                          int input, std::uint64_t size,
                                          path::write_error const& refused) {
  platform::desktop& desktop = platform::desktop::current();
  bool cancelled = false;
  platform::waiting::scope const waits(desktop.waits(), [&] { cancelled = true; });
  auto const result = platform::run_program({"pkexec", "--disable-internal-agent", program,
                                             std::to_string(size), target.identity, target.path},
                                            input, seconds_for_the_password, [&] {
                                              desktop.loop().run_for(0);
                                              return !cancelled;
                                            });
  if (result.error) return refused;
  bool const exited = WIFEXITED(result.status);
  auto const status = static_cast<write_file_status>(WEXITSTATUS(result.status));
  if (exited && status == write_file_status::written) return std::nullopt;
  // Other statuses are those of pkexec: the user has not been authorized, or wouldn't be.
  if (exited && status != write_file_status::unchanged && status != write_file_status::damaged)
    return refused;
  path::write_error error = refused;
  error.operation = "quirnote-write-file";
  if (exited) error.message = reason_in(result.standard_error);
  error.target_damaged =
      exited ? status == write_file_status::damaged : version_at(target.path) != target.version;
  return error;
}

}  // namespace

bool lacks_permission(path::write_error const& error) {
  return (error.code == EACCES || error.code == EPERM) && !error.target_damaged &&
         !error.unprotected;
}

std::optional<path::write_error> save_with_privileges(save_request const& request,
                                                      std::optional<safety_copy>& copy,
                                                      std::optional<path::file_version>& written,
                                                      path::write_error const& refused) {
  std::string const program = real_path(platform::module_folder() + "/quirnote-write-file");
  auto const target = target_at(request.path);
  if (!target || program.empty()) return refused;
  if (std::string const part = changeable_by_others(program); !part.empty()) {
    path::write_error error = refused;
    error.message +=
        ". It isn't written with an administrator's rights either, because others may "
        "change the program for that: " +
        printable(part);
    return error;
  }
  if (auto const refusal = refusal_of(*target, request)) return refusal;
  if (target->version) {
    auto const failure =
        safety_copy::create({request.path, "", request.format}, request.contents, copy);
    if (failure && !request.without_copy) return path::write_error{*failure, false, true};
  }
  int const input = open_contents(request.contents);
  auto const error =
      input < 0 ? refused : write_to(*target, program, input, request.contents.size, refused);
  if (input >= 0) close(input);
  if (copy && !(error && error->target_damaged)) {
    copy->remove();
    copy.reset();
  }
  if (!error) written = version_at(target->path).value_or(path::file_version());
  return error;
}

}  // namespace documents
