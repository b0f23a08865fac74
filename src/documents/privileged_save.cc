#include "documents/privileged_save.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "documents/file_stamp.h"
#include "path/file_output.h"
#include "path/path.h"
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
/// file that is.
struct target {
  std::string path, identity;
  std::optional<file_stamp> stamp;
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
  return target{real, std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino),
                stamp_of(real)};
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
  platform::run_loop& loop = platform::desktop::current().loop();
  auto const result =
      platform::run_program({"pkexec", "--disable-internal-agent", program, std::to_string(size),
                             target.identity, target.path},
                            input, seconds_for_the_password, [&loop] { loop.run_for(0); });
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
      exited ? status == write_file_status::damaged : stamp_of(target.path) != target.stamp;
  return error;
}

}  // namespace

bool lacks_permission(path::write_error const& error) {
  return (error.code == EACCES || error.code == EPERM) && !error.target_damaged &&
         !error.unprotected;
}

std::optional<path::write_error> save_with_privileges(save_request const& request,
                                                      std::optional<safety_copy>& copy,
                                                      path::write_error const& refused) {
  std::string const program = real_path(platform::module_folder() + "/quirnote-write-file");
  auto const target = target_at(request.path);
  if (!target || program.empty()) return refused;
  if (target->stamp) {
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
  return error;
}

}  // namespace documents
