#pragma once

#include "platform/run_loop.h"
#include "platform/system/descriptor.h"
#include "wire/message.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace server {

/// A process that has connected. Main thread only.
class peer {
 public:
  explicit peer(platform::descriptor socket) : socket_(std::move(socket)) {}

  /// False once it is gone.
  bool is_connected() const { return socket_.is_open(); }
  /// Never waits: a process that doesn't read its answers is dropped.
  void send(wire::answer const& message);
  /// The descriptor that came with its last request; not open if there was none.
  platform::descriptor take_passed() { return std::move(passed_); }
  /// To be called once, when it has gone or is dropped.
  void add_did_leave(std::function<void()> did_leave) {
    did_leave_.push_back(std::move(did_leave));
  }
  void drop();

 private:
  friend class QuirnoteServer;

  platform::descriptor socket_;
  wire::frame_reader reader_;
  platform::descriptor passed_;
  std::unique_ptr<platform::descriptor_watch> watch_;
  std::vector<std::function<void()>> did_leave_;
};

/// The named connection "Quirnote server": takes requests of other processes of this user on the
/// socket of the instance. Whatever they send and whenever they stop, nothing here waits for them.
/// Main thread only.
class QuirnoteServer {
 public:
  /// Gets each request but those for the version of the protocol, and answers it by `from`. Called
  /// from the loop in any state of the program: what it does at once must need no wait.
  using request_taker =
      std::function<void(wire::request const& what, std::shared_ptr<peer> const& from)>;

  /// `socket` listens, and outlives this; if it isn't open nobody is served.
  QuirnoteServer(platform::descriptor const& socket, platform::run_loop& loop, request_taker take);
  ~QuirnoteServer();
  QuirnoteServer(QuirnoteServer const&) = delete;
  QuirnoteServer& operator=(QuirnoteServer const&) = delete;

  /// Takes what has come by now, as the loop would at its next turn.
  void take_pending();

  /// Those of processes that are connected still.
  std::size_t connections() const { return peers_.size(); }
  static constexpr std::size_t most_connections = 256;

 private:
  void watch();
  void accept_all();
  void read_from(std::shared_ptr<peer> const& from);
  void take_message(std::string const& message, std::shared_ptr<peer> const& from);
  void forget(std::shared_ptr<peer> const& gone);

  platform::descriptor const& socket_;
  platform::run_loop& loop_;
  request_taker const take_;
  std::unique_ptr<platform::descriptor_watch> watch_;
  std::unique_ptr<platform::timer> pause_;
  std::vector<std::shared_ptr<peer>> peers_;
};

}  // namespace server
