#include "commands/background_input.h"

#include <cerrno>

namespace commands {
namespace {

constexpr int pipe_size = 1 << 20;     // bytes; where the system allows it
constexpr double send_period = 0.004;  // seconds

}  // namespace

background_input::background_input(platform::descriptor& pipe, platform::run_loop& loop)
    : pipe_(pipe), loop_(loop) {}

void background_input::write(std::string_view text) {
  if (!pipe_.is_open() || closes_) return;
  if (pending() == 0) {
    text_.clear();
    written_ = 0;
  }
  text_ += text;
  if (text_.size() > static_cast<std::size_t>(1 << 16)) fcntl(pipe_.get(), F_SETPIPE_SZ, pipe_size);
  send();
}

void background_input::close() {
  closes_ = true;
  send();
}

void background_input::send() {
  while (pipe_.is_open() && pending() > 0) {
    ssize_t const count = ::write(pipe_.get(), text_.data() + written_, pending());
    if (count > 0) written_ += static_cast<std::size_t>(count);
    if (count < 0 && errno == EAGAIN) break;
    if (count < 0 && errno != EINTR) pipe_.close();
  }
  if (pending() == 0 && closes_) pipe_.close();
  if (!pipe_.is_open()) text_ = {}, written_ = 0;
  if (pending() == 0)
    timer_.reset();
  else if (timer_ == nullptr)
    timer_ = loop_.schedule(send_period, true, [this] { send(); });
}

}  // namespace commands
