#include "server/application_t.h"

#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "wire/client.h"
#include "wire/local_socket.h"

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace wyn {
namespace {

using clock = std::chrono::steady_clock;
using seconds = std::chrono::duration<double>;

constexpr auto pause = std::chrono::milliseconds(10);
constexpr seconds start_patience(5);  // for an instance that hasn't begun to listen yet

std::string take_variable(char const* name) {
  char const* const value = std::getenv(name);
  std::string const result = value != nullptr ? value : "";
  ::unsetenv(name);
  return result;
}

// What a command that has started this process had them for ends here.
void close_given_descriptor(char const* name) {
  char const* const value = std::getenv(name);
  int number = 0;
  if (value == nullptr) return;
  char const* const end = value + std::strlen(value);
  auto const result = std::from_chars(value, end, number);
  if (result.ec == std::errc() && result.ptr == end && number > STDERR_FILENO) ::close(number);
}

}  // namespace

application_t::application_t() : name_(wire::instance_name()) {
  close_given_descriptor("QN_INTERACTIVE_INPUT_ECHO_FD");
  close_given_descriptor("QN_ERROR_FD");
  ::unsetenv("QN_INTERACTIVE_INPUT_ECHO_FD");
  relaunch_ = take_variable("RELAUNCH");
  bool const activate = !take_variable("ACTIVATE").empty();
  is_to_be_activated_ = activate || !relaunch_.empty();
}

application_t::~application_t() {
  remove_pid_file();
}

std::optional<int> application_t::hand_over(wire::request const& request) {
  auto const folder = platform::runtime_folder();
  if (!folder) {
    platform::log("there is no folder for the pid file and the socket");
    return std::nullopt;
  }
  folder_ = *folder;
  pid_path_ = folder_ + "/" + name_ + ".pid";
  pid_file_ = std::make_unique<server::pid_file>(pid_path_);
  auto const begin = clock::now();
  while (true) {
    switch (pid_file_->claim()) {
      case server::pid_file::state::ours:
        listen();
        return std::nullopt;
      case server::pid_file::state::unusable:
        platform::log("the pid file " + pid_path_ +
                      " can't be used: " + std::strerror(pid_file_->error()));
        return std::nullopt;
      case server::pid_file::state::others:
        break;
    }
    if (!relaunch_.empty() && pid_file_->other() != 0) {
      if (!end_other()) return 1;
      relaunch_.clear();
      continue;
    }
    if (relaunch_.empty()) {
      outcome const what = ask_other(request);
      if (what == outcome::taken) return 0;
      if (what != outcome::nobody) return std::nullopt;
    }
    if (clock::now() - begin > start_patience) {
      platform::log("the instance that has claimed " + pid_path_ + " doesn't listen");
      return std::nullopt;
    }
    std::this_thread::sleep_for(pause);
  }
}

// By a handle on the process: its id may be another's by the time of the signal.
bool application_t::end_other() {
  pid_t const other = pid_file_->other();
  platform::descriptor const process(static_cast<int>(::syscall(SYS_pidfd_open, other, 0)));
  if (!process.is_open()) return errno == ESRCH;
  if (!server::runs_this_program(other)) return false;
  int const number = relaunch_ == "QUICK" ? SIGTERM : SIGINT;
  if (::syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0) != 0)
    return errno == ESRCH;
  auto const end = clock::now() + seconds(relaunch_patience);
  while (true) {
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - clock::now());
    if (left.count() <= 0) return false;
    pollfd state{process.get(), POLLIN, 0};
    if (::poll(&state, 1, static_cast<int>(left.count())) == 1) return true;
  }
}

application_t::outcome application_t::ask_other(wire::request const& request) {
  wire::client other(folder_, name_);
  if (!other.is_connected())
    return other.error() == ENOENT || other.error() == ECONNREFUSED ? outcome::nobody
                                                                    : outcome::refused;
  bool const sent = other.send(request);
  auto const answer = sent ? other.receive(answer_patience) : std::nullopt;
  if (answer && answer->what == wire::answer::kind::result) return outcome::taken;
  // It may have ended just now: then this process is the next one.
  if (!answer && (other.error() == ECONNRESET || other.error() == EPIPE)) return outcome::nobody;
  platform::log("the running instance (process " + std::to_string(other.process()) + ") " +
                (answer ? "refuses: " + answer->reason : "doesn't answer") +
                "; this one goes on beside it");
  return answer ? outcome::refused : outcome::no_answer;
}

void application_t::listen() {
  int error = 0;
  socket_ = wire::listen_at(folder_, name_ + ".socket", error);
  if (!socket_.is_open())
    platform::log("couldn't setup Quirnote server in " + folder_ + ": " + std::strerror(error));
}

void application_t::remove_pid_file() {
  if (socket_.is_open()) ::unlink((folder_ + "/" + name_ + ".socket").c_str());
  socket_.close();
  if (pid_file_ != nullptr) pid_file_->remove();
}

}  // namespace wyn
