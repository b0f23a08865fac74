#include "server/QuirnoteServer.h"

#include "platform/log.h"
#include "wire/local_socket.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace server {
namespace {

constexpr std::size_t piece = std::size_t{64} << 10;  // bytes that are read in one turn
constexpr double pause = 1;                           // seconds

}  // namespace

void peer::send(wire::answer const& message) {
  if (is_connected() && wire::send_all(socket_, wire::framed(wire::encoded(message))) != 0) drop();
}

void peer::drop() {
  watch_.reset();
  socket_.close();
  for (auto const& left : std::exchange(did_leave_, {})) left();
}

QuirnoteServer::QuirnoteServer(platform::descriptor const& socket, platform::run_loop& loop,
                               request_taker take)
    : socket_(socket), loop_(loop), take_(std::move(take)) {
  if (socket_.is_open()) watch();
}

void QuirnoteServer::watch() {
  watch_ = loop_.watch_descriptor(socket_.get(), [this] { accept_all(); });
}

// Nobody is told: the process ends, and who waits sees the connection end with it.
QuirnoteServer::~QuirnoteServer() {
  for (auto const& each : std::exchange(peers_, {})) {
    each->did_leave_.clear();
    each->drop();
  }
}

void QuirnoteServer::take_pending() {
  if (!socket_.is_open()) return;
  accept_all();
  for (auto const& each : std::vector(peers_)) read_from(each);
}

void QuirnoteServer::accept_all() {
  std::erase_if(peers_, [](auto const& each) { return !each->is_connected(); });
  while (true) {
    platform::descriptor socket(
        ::accept4(socket_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket.is_open() && (errno == EINTR || errno == ECONNABORTED)) continue;
    if (!socket.is_open()) {
      if (errno == EAGAIN) return;
      // It would be tried again and again at once, while nothing is free to take it.
      watch_.reset();
      pause_ = loop_.schedule(pause, false, [this] { watch(); });
      return;
    }
    if (!wire::peer_is_this_user(socket)) {
      platform::log("a process of another user has tried to connect");
      continue;
    }
    if (peers_.size() >= most_connections) {
      platform::log("too many processes are connected");
      continue;
    }
    auto const added = std::make_shared<peer>(std::move(socket));
    added->watch_ =
        loop_.watch_descriptor(added->socket_.get(), [this, weak = std::weak_ptr(added)] {
          if (auto const from = weak.lock()) read_from(from);
        });
    peers_.push_back(added);
  }
}

void QuirnoteServer::read_from(std::shared_ptr<peer> const& from) {
  if (!from->is_connected()) return;
  wire::received come = wire::receive(from->socket_, piece);
  if (come.error == EAGAIN) return;
  if (come.passed.is_open()) from->passed_ = std::move(come.passed);
  if (come.bytes.empty() || !from->reader_.add(come.bytes)) return forget(from);
  while (auto const message = from->reader_.next()) {
    take_message(*message, from);
    if (!from->is_connected()) return forget(from);
  }
}

void QuirnoteServer::take_message(std::string const& message, std::shared_ptr<peer> const& from) {
  auto const request = wire::decode_request(message);
  if (!request) {
    from->send({.what = wire::answer::kind::failed, .reason = "this is no request"});
    return from->drop();
  }
  if (request->what == wire::request::purpose::protocol_version)
    return from->send({.result = wire::quirnoteServerProtocolVersion});
  take_(*request, from);
}

void QuirnoteServer::forget(std::shared_ptr<peer> const& gone) {
  std::shared_ptr<peer> kept;
  kept = gone;  // which may be the one in the list
  std::erase(peers_, kept);
  kept->drop();
}

}  // namespace server
