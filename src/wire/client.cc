#include "wire/client.h"

#include "wire/local_socket.h"

#include <poll.h>

#include <cerrno>
#include <chrono>

namespace wire {

client::client(std::string const& folder, std::string const& instance)
    : socket_(connect_to(folder, instance + ".socket", error_)) {}

int client::process() const {
  return peer_process(socket_);
}

bool client::send(request const& message, int passed) {
  std::string const bytes = encoded(message);
  error_ = bytes.size() > longest_message ? E2BIG : send_all(socket_, framed(bytes), passed);
  return error_ == 0;
}

std::optional<answer> client::receive(double seconds) {
  using clock = std::chrono::steady_clock;
  auto const end = clock::now() + std::chrono::duration<double>(seconds);
  while (true) {
    if (auto const message = reader_.next()) {
      auto const read = decode_answer(*message);
      if (!read) error_ = EPROTO;
      return read;
    }
    pollfd state{socket_.get(), POLLIN, 0};
    auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - clock::now());
    int const ready =
        poll(&state, 1, seconds < 0 ? -1 : std::max(static_cast<int>(left.count()), 0));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) {
      error_ = ready == 0 ? ETIMEDOUT : errno;
      return std::nullopt;
    }
    received const come = wire::receive(socket_, 4096);
    if (come.bytes.empty() || !reader_.add(come.bytes)) {
      error_ = come.error != 0 ? come.error : ECONNRESET;
      return std::nullopt;
    }
  }
}

}  // namespace wire
