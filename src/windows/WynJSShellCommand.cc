#include "windows/WynJSShellCommand.h"

#include "commands/ending_children.h"
#include "commands/multibyte_end.h"
#include "platform/desktop.h"
#include "platform/log.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr double end_period = 0.01;  // seconds
constexpr std::size_t block = 1 << 16;
constexpr std::size_t most_unread = std::size_t{1} << 18;    // bytes that a page hasn't asked for
constexpr std::size_t most_at_once = std::size_t{64} << 20;  // bytes that a page waits for

}  // namespace

std::unique_ptr<WynJSShellCommand> WynJSShellCommand::runTaskWithCommand(
    std::string const& text, commands::variables const& environment, std::string& error) {
  auto task = commands::child_process::start(
      {.script = text, .environment = environment, .directory = "/tmp", .separate_errors = true},
      error);
  if (task == nullptr) return nullptr;
  return std::unique_ptr<WynJSShellCommand>(
      new WynJSShellCommand(std::move(task), platform::desktop::current().loop()));
}

WynJSShellCommand::WynJSShellCommand(std::unique_ptr<commands::child_process> task,
                                     platform::run_loop& loop)
    : task_(std::move(task)), loop_(loop), input_(task_->input(), loop) {
  streams_[0].pipe = &task_->output();
  streams_[1].pipe = &task_->errors();
  watchStreams();
}

WynJSShellCommand::~WynJSShellCommand() {
  streams_ = {};
  if (!didTerminate_) commands::ending_children::shared().add(std::move(task_));
  for (answer const& give : {std::exchange(next_, nullptr), std::exchange(wait_, nullptr)})
    if (give) give({.didTerminate = true, .status = -1});
}

void WynJSShellCommand::next(answer give) {
  if (answer const former = std::exchange(next_, std::move(give))) former({});
  checkForData();
}

void WynJSShellCommand::wait(answer give) {
  wait_ = std::move(give);
  watchStreams();
  checkForData();
}

void WynJSShellCommand::cancel() {
  isCancelled_ = true;
  checkForData();
}

void WynJSShellCommand::watchStreams() {
  std::size_t const most = wait_ ? most_at_once : most_unread;
  for (stream& each : streams_) {
    if (!each.pipe->is_open() || each.data.size() >= most)
      each.watch.reset();
    else if (each.watch == nullptr)
      each.watch = loop_.watch_descriptor(each.pipe->get(), [this, &each] { dataAvailable(each); });
  }
}

void WynJSShellCommand::dataAvailable(stream& from) {
  std::size_t const had = from.data.size();
  from.data.resize(had + block);
  ssize_t const count = read(from.pipe->get(), from.data.data() + had, block);
  from.data.resize(had + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
    from.watch.reset();
    from.pipe->close();
  }
  if (wait_ && from.data.size() >= most_at_once) {
    platform::log("a command of a page has printed more than " +
                  std::to_string(most_at_once >> 20) + " MB at once, and is stopped");
    isCancelled_ = true;
  }
  watchStreams();
  checkForData();
}

/// Looks at the process now and then while it is to end, or has closed its streams.
void WynJSShellCommand::lookForEnd() {
  if (didTerminate_) return;
  if (isCancelled_) task_->terminate();
  if (task_->is_killed())
    for (stream& each : streams_) {
      each.watch.reset();
      each.pipe->close();
    }
  bool const is_read = !streams_[0].pipe->is_open() && !streams_[1].pipe->is_open();
  didTerminate_ = is_read && task_->has_ended();
  if (didTerminate_ || !(is_read || isCancelled_))
    timer_.reset();
  else if (timer_ == nullptr)
    timer_ = loop_.schedule(end_period, true, [this] { checkForData(); });
}

std::string WynJSShellCommand::take(stream& from) {
  char const* const first = from.data.data();
  char const* const end = first + from.data.size();
  auto const whole = static_cast<std::size_t>(
      (from.pipe->is_open() ? commands::find_multibyte_end(first, end) : end) - first);
  std::string taken = from.data.substr(0, whole);
  from.data.erase(0, whole);
  return taken;
}

void WynJSShellCommand::checkForData() {
  lookForEnd();
  answer& asked = didTerminate_ && wait_ ? wait_ : next_;
  if (!asked) return;
  progress now{take(streams_[0]), take(streams_[1]), didTerminate_,
               didTerminate_ ? task_->exit_status() : 0};
  if (!didTerminate_ && now.outputData.empty() && now.errorData.empty()) return;
  watchStreams();
  // The answer may end this object.
  auto const give = std::exchange(asked, nullptr);
  give(std::move(now));
}
