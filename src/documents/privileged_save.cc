#include "documents/privileged_save.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "documents/printable_name.h"
#include "path/file_output.h"
#include "path/write_target.h"
#include "platform/desktop.h"
#include "platform/system/library_folders.h"
#include "platform/system/run_program.h"
#include "privileged/write_file_status.h"

namespace documents {
namespace {

constexpr double seconds_for_the_password = 300;

/// Without links, "" if it can't be told.
std::string real_path(std::string const& path) {
  std::unique_ptr<char, void (*)(void*)> const real(realpath(path.c_str(), nullptr), std::free);
  return real ? real.get() : "";
}

/// The version in the form in which the program that writes takes and prints it.
std::string identity_of(path::file_version const& version) {
  auto const text = [](auto number) { return std::to_string(number); };
  return text(version.device) + ":" + text(version.inode) + ":" + text(version.size) + ":" +
         text(version.modified);
}

std::optional<path::file_version> version_in(std::string const& identity) {
  path::file_version version;
  char const* at = identity.data();
  char const* const last = at + identity.size();
  auto const takes = [&](auto& number, char end) {
    auto const [next, error] = std::from_chars(at, last, number);
    at = next == last ? next : next + 1;
    return error == std::errc() && next != last && *next == end;
  };
  bool const whole = takes(version.device, ':') && takes(version.inode, ':') &&
                     takes(version.size, ':') && takes(version.modified, '\n') && at == last;
  return whole ? std::optional(version) : std::nullopt;
}

/// The permissions that a new file is to have. Where none are known they are those of any file that
/// this user makes, but no one but the administrator may write it.
mode_t mode_if_new(path::write_target const& target) {
  constexpr mode_t permissions = 0777;
  if (auto const& wanted = target.attributes(false)) return wanted->st_mode & permissions;
  mode_t const mask = umask(0);
  umask(mask);
  return 0644 & ~mask;
}

/// What the program that writes is told of the file: which version may be overwritten. It compares
/// it, and follows no link.
std::string described(path::write_target const& target) {
  if (target.info()) return identity_of(path::version_of(*target.info()));
  char text[16];
  std::snprintf(text, sizeof text, "new:%o", mode_if_new(target));
  return text;
}

/// The first part of the path, whose links have been followed, that a user other than root may
/// change; "" if none. A user who could change the program that writes would get the rights that
/// are asked for.
std::string changeable_by_others(std::string const& program) {
  for (std::size_t end = 0; end != program.npos;) {
    end = program.find('/', end + 1);
    std::string const part = program.substr(0, end);
    struct stat info;
    if (lstat(part.c_str(), &info) != 0 || info.st_uid != 0 || (info.st_mode & 022)) return part;
  }
  return "";
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
std::optional<path::write_error> write_to(path::write_target const& target,
                                          std::string const& program, int input, std::uint64_t size,
                                          path::write_error const& refused,
                                          std::optional<path::file_version>& written) {
  platform::desktop& desktop = platform::desktop::current();
  bool cancelled = false;
  platform::waiting::scope const waits(desktop.waits(), [&] { cancelled = true; });
  auto const result =
      platform::run_program({"pkexec", "--disable-internal-agent", program, std::to_string(size),
                             described(target), target.place().place().target},
                            input, seconds_for_the_password, [&] {
                              desktop.loop().run_for(0);
                              return !cancelled;
                            });
  if (result.error) return refused;
  bool const exited = WIFEXITED(result.status);
  auto const status = static_cast<write_file_status>(WEXITSTATUS(result.status));
  if (exited && status == write_file_status::written) {
    // What can't be understood is no version of any file, so that the next save asks.
    written = version_in(result.standard_output).value_or(path::file_version());
    return std::nullopt;
  }
  // Other statuses are those of pkexec: the user has not been authorized, or wouldn't be.
  if (exited && status != write_file_status::unchanged && status != write_file_status::damaged)
    return refused;
  path::write_error error = refused;
  error.operation = "quirnote-write-file";
  if (exited) error.message = reason_in(result.standard_error);
  error.target_damaged = exited ? status == write_file_status::damaged : !target.is_as_found();
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
  if (program.empty()) return refused;
  if (std::string const part = changeable_by_others(program); !part.empty()) {
    path::write_error error = refused;
    error.message +=
        ". It isn't written with an administrator's rights either, because others may "
        "change the program for that: " +
        printable(part);
    return error;
  }
  path::write_target target(request.path, request.options, path::file_system_calls::system());
  if (auto const refusal = target.find()) return refusal;
  if (target.info()) {
    auto const failure =
        safety_copy::create({request.path, "", request.format}, request.contents, copy);
    if (failure && !request.without_copy) return path::write_error{*failure, false, true};
  }
  int const input = open_contents(request.contents);
  auto const error =
      input < 0 ? refused
                : write_to(target, program, input, request.contents.size, refused, written);
  if (input >= 0) close(input);
  if (copy && !(error && error->target_damaged)) {
    copy->remove();
    copy.reset();
  }
  return error;
}

}  // namespace documents
