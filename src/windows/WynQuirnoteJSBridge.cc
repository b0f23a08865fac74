#include "windows/WynQuirnoteJSBridge.h"

#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/percent_encoding.h"
#include "platform/utf.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace {

constexpr std::size_t most_unwritten = std::size_t{1} << 20;  // bytes; then a page waits
constexpr std::size_t longest_log = 4096;                     // bytes of one message
constexpr std::size_t most_messages = 200;                    // of one page
constexpr double write_period = 0.01;                         // seconds

std::string quoted(std::string_view bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string result = "\"";
  // What is no UTF-8 becomes U+FFFD on the way.
  for (char const c : unicode::to_utf8(unicode::to_utf16(bytes))) {
    auto const byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\')
      result += {'\\', c};
    else if (byte < 0x20)
      result += {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
    else
      result += c;
  }
  return result + '"';
}

std::string json_of(WynJSShellCommand::progress const& now) {
  return "{\"output\":" + quoted(now.outputData) + ",\"error\":" + quoted(now.errorData) +
         ",\"ended\":" + (now.didTerminate ? "true" : "false") +
         ",\"status\":" + std::to_string(now.status) + "}";
}

bool may_run_commands(std::string_view origin) {
  return origin.starts_with("qn-internal:") || origin.starts_with("qn-file:");
}

}  // namespace

WynQuirnoteJSBridge::WynQuirnoteJSBridge(commands::variables environment, busy_state& delegate)
    : environment_(std::move(environment)), delegate_(delegate) {}

WynQuirnoteJSBridge::~WynQuirnoteJSBridge() {
  for (auto const& each : writes_) each.give(std::nullopt);
}

void WynQuirnoteJSBridge::answer(platform::page_request const& request) {
  if (!may_run_commands(request.origin)) {
    platform::log_text(
        "SECURITY WARNING: Quirnote.system() can only be used on dynamically loaded or locally "
        "hosted pages.\n");
    std::string const scheme = request.page.substr(0, request.page.find(':'));
    platform::log_text("Offending page was loaded from " + request.page + " (" + scheme + ")\n");
    return request.answer(std::nullopt);
  }
  auto const fields = platform::query_fields(request.arguments);
  if (!fields) return request.answer(std::nullopt);
  auto const field = [&](std::string_view name) {
    auto const it = fields->find(name);
    return it == fields->end() ? std::string() : it->second;
  };
  std::string const text = field("text"), number = field("id");
  std::uint64_t id = 0;
  std::from_chars(number.data(), number.data() + number.size(), id);
  auto const task = tasks_.find(id);

  if (request.operation == "system" || request.operation == "start")
    return start(text, request.operation == "system", request.answer);
  if (request.operation == "log") {
    log(text);
    return request.answer("{}");
  }
  if (request.operation == "busy") {
    if (fields->contains("value")) delegate_.setIsBusy(field("value") == "true");
    return request.answer(delegate_.isBusy() ? "{\"busy\":true}" : "{\"busy\":false}");
  }
  if (task == tasks_.end()) return request.answer(std::nullopt);
  if (request.operation == "next") return tellProgress(id, request.answer);
  if (request.operation == "write") return write(id, text, request.answer);
  if (request.operation == "close") task->second->close();
  if (request.operation == "cancel") task->second->cancel();
  bool const is_known = request.operation == "close" || request.operation == "cancel";
  request.answer(is_known ? std::optional<std::string>("{}") : std::nullopt);
}

void WynQuirnoteJSBridge::log(std::string const& message) {
  if (++messages_ <= most_messages) platform::log(message.substr(0, longest_log));
  if (messages_ == most_messages) platform::log("more messages of this page are not logged");
}

void WynQuirnoteJSBridge::start(std::string const& text, bool waits, reply const& give) {
  std::string error;
  std::unique_ptr<WynJSShellCommand> task;
  if (tasks_.size() >= most_tasks)
    error = "the page has " + std::to_string(most_tasks) + " commands under way";
  else if (text.find('\0') != text.npos)
    error = "the command has a NULL character";
  else
    task = WynJSShellCommand::runTaskWithCommand(text, environment_, error);
  if (task == nullptr) {
    log("a command of a page was not run: " + error);
    return give(std::nullopt);
  }
  std::uint64_t const id = ++last_id_;
  WynJSShellCommand& started = *tasks_.emplace(id, std::move(task)).first->second;
  if (!waits) return give("{\"id\":" + std::to_string(id) + "}");
  started.wait([this, id, give, lives = std::weak_ptr(lives_)](auto const& now) {
    std::string const json = json_of(now);
    if (!lives.expired()) forget(id);
    give(json);
  });
}

void WynQuirnoteJSBridge::tellProgress(std::uint64_t id, reply const& give) {
  tasks_[id]->next([this, id, give, lives = std::weak_ptr(lives_)](auto const& now) {
    std::string const json = json_of(now);
    if (now.didTerminate && !lives.expired()) forget(id);
    give(json);
  });
}

// Its end answers what else was asked of it, and that comes here again: by then it is not among the
// tasks any more.
void WynQuirnoteJSBridge::forget(std::uint64_t id) {
  auto const ended = tasks_.extract(id);
}

void WynQuirnoteJSBridge::write(std::uint64_t id, std::string const& text, reply const& give) {
  tasks_[id]->write(text);
  writes_.push_back({id, give});
  answerWrites();
}

// A command that doesn't read makes the page wait, and what it writes doesn't fill memory.
void WynQuirnoteJSBridge::answerWrites() {
  std::vector<reply> answered;
  std::erase_if(writes_, [&](pending_write const& each) {
    auto const task = tasks_.find(each.id);
    if (task != tasks_.end() && task->second->pendingInput() > most_unwritten) return false;
    answered.push_back(each.give);
    return true;
  });
  if (writes_.empty())
    write_timer_.reset();
  else if (write_timer_ == nullptr)
    write_timer_ = platform::desktop::current().loop().schedule(write_period, true,
                                                                [this] { answerWrites(); });
  for (reply const& give : answered) give("{}");
}
