#include "wire/local_socket.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace wire {
namespace {

constexpr int waiting_connections = 64;

// The address of `name` in the open folder: a path to it may be too long.
sockaddr_un address_in(platform::descriptor const& folder, std::string const& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string const path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name;
  // Names are those of instances, which are shorter than this.
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
  return address;
}

platform::descriptor open_folder(std::string const& folder) {
  return platform::descriptor(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

platform::descriptor new_socket(int flags) {
  return platform::descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0));
}

bool credentials(platform::descriptor const& socket, ucred& peer) {
  socklen_t size = sizeof peer;
  return ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
}

}  // namespace

std::string instance_name() {
  constexpr std::size_t longest = 64;
  char const* const custom = std::getenv("CUSTOM_APP_NAME");
  std::string const name = custom != nullptr ? custom : "";
  bool const is_name = !name.empty() && name.size() <= longest && name[0] != '.' &&
                       name.find('/') == std::string::npos;
  return is_name ? name : "quirnote";
}

platform::descriptor listen_at(std::string const& folder_path, std::string const& name,
                               int& error) {
  auto const folder = open_folder(folder_path);
  auto socket = new_socket(SOCK_NONBLOCK);
  sockaddr_un const address = address_in(folder, name);
  if (folder.is_open()) ::unlinkat(folder.get(), name.c_str(), 0);
  bool const listens =
      folder.is_open() && socket.is_open() &&
      ::bind(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0 &&
      ::fchmodat(folder.get(), name.c_str(), 0600, 0) == 0 &&
      ::listen(socket.get(), waiting_connections) == 0;
  error = listens ? 0 : errno;
  return listens ? std::move(socket) : platform::descriptor();
}

platform::descriptor connect_to(std::string const& folder_path, std::string const& name,
                                int& error) {
  auto const folder = open_folder(folder_path);
  auto socket = new_socket(0);
  sockaddr_un const address = address_in(folder, name);
  // A full queue of those that wait to be accepted must not stop this process for good.
  timeval const patience{5, 0};
  if (socket.is_open())
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  bool const connected =
      folder.is_open() && socket.is_open() &&
      ::connect(socket.get(), reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
  error = connected ? 0 : errno;
  if (!connected) return {};
  if (!peer_is_this_user(socket)) {
    error = EACCES;
    return {};
  }
  return socket;
}

bool peer_is_this_user(platform::descriptor const& socket) {
  ucred peer{};
  return credentials(socket, peer) && peer.uid == ::geteuid();
}

int peer_process(platform::descriptor const& socket) {
  ucred peer{};
  return credentials(socket, peer) ? peer.pid : 0;
}

int send_all(platform::descriptor const& socket, std::string_view bytes, int passed) {
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof passed)] = {};
  while (!bytes.empty()) {
    iovec part{const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (passed >= 0) {
      message.msg_control = control;
      message.msg_controllen = sizeof control;
      cmsghdr* const header = CMSG_FIRSTHDR(&message);
      header->cmsg_level = SOL_SOCKET;
      header->cmsg_type = SCM_RIGHTS;
      header->cmsg_len = CMSG_LEN(sizeof passed);
      std::memcpy(CMSG_DATA(header), &passed, sizeof passed);
    }
    ssize_t const sent = ::sendmsg(socket.get(), &message, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
    passed = -1;
  }
  return 0;
}

received receive(platform::descriptor const& socket, std::size_t most) {
  received result;
  result.bytes.resize(most);
  constexpr std::size_t most_passed = 8;  // all are taken, so that none stays open
  alignas(cmsghdr) char control[CMSG_SPACE(most_passed * sizeof(int))];
  iovec part{result.bytes.data(), most};
  msghdr message{};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t count;
  do {
    count = ::recvmsg(socket.get(), &message, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  result.error = count < 0 ? errno : 0;
  result.bytes.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
  if (count < 0) return result;
  for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
       header = CMSG_NXTHDR(&message, header)) {
    if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) continue;
    std::size_t const passed = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (std::size_t n = 0; n < passed; ++n) {
      int number;
      std::memcpy(&number, CMSG_DATA(header) + n * sizeof number, sizeof number);
      result.passed = platform::descriptor(number);
    }
  }
  return result;
}

}  // namespace wire
