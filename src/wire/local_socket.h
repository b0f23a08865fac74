#pragma once

#include "platform/system/descriptor.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Local sockets between processes of one user.
namespace wire {

/// What the running instance is called, and its pid file and socket after it: "quirnote", or
/// CUSTOM_APP_NAME where that is set to what can be a file's name.
std::string instance_name();

/// Listens at `name` in `folder`, whose path may be longer than an address can be. What was there
/// is removed. With errno in `error` on failure.
platform::descriptor listen_at(std::string const& folder, std::string const& name, int& error);

/// A connection to who listens there. ENOENT or ECONNREFUSED if nobody does, EACCES if it is a
/// process of another user.
platform::descriptor connect_to(std::string const& folder, std::string const& name, int& error);

/// Whether the process at the other end belongs to this user.
bool peer_is_this_user(platform::descriptor const& socket);
/// Its id; 0 if it can't be known.
int peer_process(platform::descriptor const& socket);

/// Sends all of it, and `passed` along unless it is -1. Waits no longer than the socket does; an
/// errno, 0 when all is sent.
int send_all(platform::descriptor const& socket, std::string_view bytes, int passed = -1);

struct received {
  std::string bytes = {};            ///< empty at the end
  platform::descriptor passed = {};  ///< which came along
  int error = 0;                     ///< EAGAIN if nothing is there yet
};
/// What has come, at most `most` bytes; waits for it if the socket does.
received receive(platform::descriptor const& socket, std::size_t most);

}  // namespace wire
