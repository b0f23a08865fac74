#include "path/file_reader.h"

#include <sys/socket.h>
#include <sys/un.h>

#include "path/temporary_folder.h"
#include "test.h"

namespace {

/// What `open` says of a path: "" when it opens.
std::string refusal(std::string const& path) {
  path::file_reader reader;
  auto const error = reader.open(path);
  return error ? error->message : "";
}

TEST(file_reader, refuses_without_waiting_what_is_no_file) {
  temporary_folder folder;
  std::string const pipe = folder / "pipe", socket_path = folder / "socket";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  int const fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, socket_path.c_str());
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);

  EXPECT_EQ(refusal(pipe), "It is a named pipe");
  EXPECT_EQ(refusal(socket_path), "It is a socket");
  EXPECT_EQ(refusal("/dev/zero"), "It is a device");
  EXPECT_EQ(refusal(folder.path()), "It is a folder");
  EXPECT_EQ(refusal(folder / "missing"), "No such file or directory");
  EXPECT_EQ(refusal(folder / "pipe/x"), "Not a directory");
  EXPECT_EQ(refusal(folder.write("file", "")), "");
  close(fd);
}

TEST(file_reader, reads_in_pieces_to_the_end) {
  temporary_folder folder;
  path::file_reader reader;
  ASSERT_FALSE(reader.open(folder.write("file", "abcdefg")));
  EXPECT_EQ(reader.info().st_size, 7);
  char buffer[4];
  EXPECT_EQ(reader.read(buffer, 4).bytes, 4u);
  auto const rest = reader.read(buffer, 4);
  EXPECT_EQ(std::string(buffer, rest.bytes), "efg");
  EXPECT_FALSE(rest.error);
  EXPECT_EQ(reader.read(buffer, 4).bytes, 0u);
}

/// Gives a byte at a time, is interrupted before each, and fails at some point.
class halting_calls : public path::file_system_calls {
 public:
  explicit halting_calls(int bytes) : bytes_left_(bytes) {}
  ssize_t read(int fd, void* buffer, std::size_t) override {
    if ((interrupted_ = !interrupted_)) {
      errno = EINTR;
      return -1;
    }
    errno = EIO;
    return bytes_left_-- > 0 ? file_system_calls::read(fd, buffer, 1) : -1;
  }

 private:
  int bytes_left_;
  bool interrupted_ = false;
};

TEST(file_reader, tells_what_it_read_before_an_error) {
  temporary_folder folder;
  halting_calls calls(3);
  path::file_reader reader(calls);
  std::string const file = folder.write("file", "abcdefg");
  ASSERT_FALSE(reader.open(file));
  char buffer[7];
  auto const result = reader.read(buffer, 7);
  EXPECT_EQ(std::string(buffer, result.bytes), "abc");
  ASSERT_TRUE(result.error);
  EXPECT_EQ(path::description(*result.error), "read " + file + ": Input/output error");
}

}  // namespace
