#include "platform/system/library_folders.h"
#include "quirn/arguments.h"
#include "quirn/start_editor.h"
#include "quirn/waiter_name.h"
#include "wire/client.h"
#include "wire/local_socket.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

enum status { done = 0, not_saved = 1, wrong_usage = 2, failed = 3 };

constexpr double start_patience = 30, result_patience = 60, restart_patience = 10;  // seconds
constexpr auto pause = std::chrono::milliseconds(5);

int fail(std::string const& reason) {
  std::fprintf(stderr, "quirn: %s\n", reason.c_str());
  return failed;
}

bool is_waiting_on_input() {
  struct stat info;
  return ::fstat(STDIN_FILENO, &info) == 0 &&
         (S_ISFIFO(info.st_mode) || S_ISREG(info.st_mode) || S_ISSOCK(info.st_mode));
}

// False with errno.
bool copy_all(int from, int to) {
  static char piece[1 << 16];
  while (true) {
    ssize_t const size = ::read(from, piece, sizeof piece);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return size == 0;
    for (ssize_t at = 0; at < size;) {
      ssize_t const written = ::write(to, piece + at, static_cast<std::size_t>(size - at));
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) return false;
      at += written;
    }
  }
}

std::string first_variable(std::initializer_list<char const*> names) {
  for (char const* name : names)
    if (char const* const value = std::getenv(name); value != nullptr && *value != '\0')
      return value;
  return "";
}

class session {
 public:
  explicit session(wire::request request) : request_(std::move(request)) {
    for (std::size_t n = 0; n < request_.files.size() + request_.has_input; ++n) open_.push_back(n);
  }

  /// The text of the new document, which is given back in it.
  bool read_input() {
    input_ = platform::descriptor(::memfd_create("quirn-input", MFD_CLOEXEC));
    return copy_all(STDIN_FILENO, input_.get());
  }

  int run() {
    auto const folder = platform::runtime_folder();
    if (!folder) return fail("there is no folder for the editor's socket");
    folder_ = *folder;
    bool starts = true;
    while (true) {
      auto client = connect(starts);
      if (!client) return fail(reason_);
      if (ask(*client)) return finish();
      if (!reason_.empty()) return fail(reason_);
      // The editor has gone. What waits goes on with the one that is started in its place.
      starts = !was_taken_;
    }
  }

 private:
  std::optional<wire::client> connect(bool starts) {
    using clock = std::chrono::steady_clock;
    auto const end =
        clock::now() + std::chrono::duration<double>(starts ? start_patience : restart_patience);
    std::optional<quirn::started_editor> editor;
    while (true) {
      bool const has_ended = editor && editor->has_ended();
      wire::client client(folder_, wire::instance_name());
      if (client.is_connected()) return client;
      if (client.error() == EACCES) {
        reason_ = "the socket in " + folder_ + " can't be used";
        return std::nullopt;
      }
      if (has_ended) {
        std::string const messages = editor->messages();
        reason_ = "the editor has ended" + (messages.empty() ? "" : ":\n" + messages);
        return std::nullopt;
      }
      if (clock::now() > end) {
        reason_ = starts ? "the editor doesn't start" : "the editor ended while files were open";
        return std::nullopt;
      }
      if (starts && !editor) editor.emplace();
      std::this_thread::sleep_for(pause);
    }
  }

  // False if the connection has ended; with a reason if there is no use in another one.
  bool ask(wire::client& client) {
    wire::request request = request_;
    request.files.clear();
    request.has_input = false;
    std::vector<std::size_t> const asked = open_;
    for (std::size_t const n : asked) {
      if (n < request_.files.size())
        request.files.push_back(request_.files[n]);
      else
        request.has_input = true;
    }
    if (request.has_input) ::lseek(input_.get(), 0, SEEK_SET);
    if (!client.send(request, request.has_input ? input_.get() : -1)) {
      if (client.error() == E2BIG) reason_ = "there are too many files";
      if (client.error() == EAGAIN) reason_ = "the editor doesn't answer";
      return false;
    }
    if (!take_result(client)) return false;
    while (request_.waits && !open_.empty()) {
      auto const answer = client.receive(-1);
      if (!answer) return false;
      if (answer->what != wire::answer::kind::closed || answer->file >= asked.size()) continue;
      std::size_t const file = asked[answer->file];
      std::erase(open_, file);
      all_saved_ = all_saved_ && answer->is_saved;
      if (file == request_.files.size()) gives_text_ = answer->is_saved;
    }
    return true;
  }

  bool take_result(wire::client& client) {
    auto const answer = client.receive(result_patience);
    if (answer && answer->what == wire::answer::kind::result) return was_taken_ = true;
    if (answer)
      reason_ = "the editor refuses: " + answer->reason;
    else if (client.error() == ETIMEDOUT)
      reason_ = "the editor doesn't answer";
    return false;
  }

  int finish() {
    if (gives_text_ &&
        (::lseek(input_.get(), 0, SEEK_SET) != 0 || !copy_all(input_.get(), STDOUT_FILENO)))
      return fail(std::string("standard output: ") + std::strerror(errno));
    return all_saved_ ? done : not_saved;
  }

  wire::request const request_;
  platform::descriptor input_;
  std::string folder_;
  std::vector<std::size_t> open_;  // files that aren't closed yet; the input comes last
  bool was_taken_ = false;
  bool all_saved_ = true, gives_text_ = false;
  std::string reason_;
};

int run(std::vector<std::string> const& words) {
  std::string error;
  auto parsed = quirn::parse_arguments(words, error);
  if (!parsed) {
    std::fprintf(stderr, "quirn: %s\n%s", error.c_str(), quirn::usage_text);
    return wrong_usage;
  }
  if (parsed->what != quirn::arguments::purpose::open) {
    bool const is_help = parsed->what == quirn::arguments::purpose::help;
    bool const printed =
        std::fputs(is_help ? quirn::usage_text : "quirn " QUIRNOTE_VERSION "\n", stdout) >= 0 &&
        std::fflush(stdout) == 0;
    return printed ? done : fail(std::string("standard output: ") + std::strerror(errno));
  }
  wire::request& request = parsed->request;
  request.has_input = parsed->reads_input || (request.files.empty() && is_waiting_on_input());
  request.activation_token = first_variable({"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"});
  if (request.waits) request.waiter = quirn::waiter_name();
  if (parsed->passes_environment)
    for (char** entry = environ; *entry != nullptr; ++entry) request.environment.push_back(*entry);
  session work(request);
  if (request.has_input && !work.read_input())
    return fail(std::string("standard input: ") + std::strerror(errno));
  return work.run();
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  return run({argv + (argc > 0), argv + argc});
}
