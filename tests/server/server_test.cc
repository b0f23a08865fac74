#include "server/QuirnoteServer.h"

#include "headless/headless_run_loop.h"
#include "path/temporary_folder.h"
#include "server/application_t.h"
#include "server/pid_file.h"
#include "test.h"
#include "wire/client.h"
#include "wire/local_socket.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>

namespace server {
namespace {

using state = pid_file::state;

TEST(pid_file, is_that_of_the_process_that_has_locked_it) {
  temporary_folder folder;
  std::string const path = folder / "name.pid";
  // Left over, of another program's process, of none, and of nothing that is an id.
  for (std::string const content : {"1", "999999999", "-3", "x", ""}) {
    folder.write("name.pid", content);
    pid_file first(path);
    EXPECT_EQ(first.claim(), state::ours) << content;
    EXPECT_EQ(folder.read(path), std::to_string(::getpid()));
    pid_file second(path);
    EXPECT_EQ(second.claim(), state::others);
    EXPECT_EQ(second.other(), ::getpid());
    second.remove();
    EXPECT_EQ(folder.names(), std::set<std::string>({"name.pid"}));
    first.remove();
    EXPECT_EQ(second.claim(), state::ours);
  }
  EXPECT_EQ(folder.names(), std::set<std::string>());
  pid_file nowhere(folder / "none/name.pid");
  EXPECT_EQ(nowhere.claim(), state::unusable);
  EXPECT_EQ(nowhere.error(), ENOENT);
  EXPECT_TRUE(runs_this_program(::getpid()));
  EXPECT_FALSE(runs_this_program(1));
  EXPECT_FALSE(runs_this_program(0));
}

// Each of many that start at once claims it, and goes away again; no two have it at a time.
TEST(pid_file, is_claimed_by_one_process_at_a_time) {
  temporary_folder folder;
  std::string const path = folder / "name.pid", held = folder / "held";
  for (int n = 0; n < 8; ++n) {
    if (::fork() != 0) continue;
    int claims = 0;
    for (int tries = 0; tries < 100000 && claims < 20; ++tries) {
      pid_file file(path);
      if (file.claim() != state::ours) continue;
      ++claims;
      if (::mkdir(held.c_str(), 0700) != 0) ::_exit(1);
      ::rmdir(held.c_str());
    }
    ::_exit(claims == 20 ? 0 : 2);
  }
  int status;
  while (::wait(&status) > 0) EXPECT_EQ(status, 0);
}

class served : public testing::Test {
 protected:
  served()
      : server_(socket_, loop_, [this](auto const& asked, auto const& from) {
          requests.push_back(asked);
          peers.push_back(from);
          from->send({});
        }) {}

  wire::client connect() { return wire::client(folder_.path(), "name"); }
  /// What the raw bytes bring back, and the end of the connection as "|".
  std::string answers_to(std::string const& bytes) {
    int error;
    auto const socket = wire::connect_to(folder_.path(), "name.socket", error);
    EXPECT_EQ(wire::send_all(socket, bytes), 0);
    ::shutdown(socket.get(), SHUT_WR);
    for (int n = 0; n < 5; ++n) loop_.run_for(0);
    wire::frame_reader reader;
    std::string result;
    while (true) {
      auto const come = wire::receive(socket, 4096);
      if (come.bytes.empty()) break;
      reader.add(come.bytes);
    }
    while (auto const message = reader.next()) {
      auto const answer = wire::decode_answer(*message);
      result += answer ? std::to_string(answer->result) + answer->reason + "," : "?";
    }
    return result;
  }

  temporary_folder folder_;
  headless::headless_run_loop loop_;
  int error_ = 0;
  platform::descriptor socket_ = wire::listen_at(folder_.path(), "name.socket", error_);
  std::vector<wire::request> requests;
  std::vector<std::shared_ptr<peer>> peers;
  QuirnoteServer server_;
};

TEST_F(served, answers_in_order_and_hands_requests_on) {
  using wire::framed;
  wire::request const version{.what = wire::request::purpose::protocol_version};
  wire::request const open{.files = {{"/a", "3"}}};
  EXPECT_EQ(answers_to(framed(encoded(version)) + framed(encoded(open))), "2,1,");
  EXPECT_EQ(requests, std::vector({open}));
  EXPECT_EQ(answers_to(framed("junk") + framed(encoded(open))), "1this is no request,");
  EXPECT_EQ(answers_to("\xFF\xFF\xFF\xFF"), "");
  EXPECT_EQ(requests.size(), 1u);
  EXPECT_EQ(server_.connections(), 0u);
}

TEST_F(served, gets_the_descriptor_and_is_told_that_the_process_has_left) {
  int left = 0;
  {
    auto client = connect();
    platform::descriptor const file(::memfd_create("test", MFD_CLOEXEC));
    ASSERT_EQ(::write(file.get(), "text", 4), 4);
    ASSERT_TRUE(client.send({.has_input = true}, file.get()));
    loop_.run_for(0);
    loop_.run_for(0);
    ASSERT_EQ(peers.size(), 1u);
    char bytes[8];
    auto const passed = peers[0]->take_passed();
    EXPECT_EQ(::pread(passed.get(), bytes, 8, 0), 4);
    EXPECT_EQ(client.receive(0)->what, wire::answer::kind::result);
    EXPECT_FALSE(client.receive(0));
    EXPECT_EQ(client.error(), ETIMEDOUT);
    peers[0]->add_did_leave([&] { ++left; });
    loop_.run_for(0);
    EXPECT_EQ(left, 0);
  }
  loop_.run_for(0);
  EXPECT_EQ(left, 1);
  EXPECT_FALSE(peers[0]->is_connected());
}

TEST_F(served, drops_a_process_that_reads_no_answers) {
  auto const client = connect();
  auto other = connect();
  ASSERT_TRUE(other.send({}));
  loop_.run_for(0);
  loop_.run_for(0);
  ASSERT_EQ(peers.size(), 1u);
  int sent = 0;
  for (; sent < 100000 && peers[0]->is_connected(); ++sent)
    peers[0]->send({.reason = std::string(1000, 'x')});
  EXPECT_LT(sent, 100000);
  EXPECT_TRUE(connect().is_connected());
}

TEST_F(served, keeps_to_its_number_of_connections_and_serves_again) {
  std::vector<wire::client> clients;
  for (std::size_t n = 0; n < QuirnoteServer::most_connections + 5; ++n) {
    clients.push_back(connect());
    loop_.run_for(0);
  }
  EXPECT_EQ(server_.connections(), QuirnoteServer::most_connections);
  clients.clear();
  loop_.run_for(0);
  EXPECT_EQ(server_.connections(), 0u);
  EXPECT_EQ(answers_to(wire::framed(encoded(wire::request{}))), "1,");
}

TEST_F(served, survives_random_messages) {
  constexpr unsigned seed = 1;
  std::mt19937 random(seed);
  auto const below = [&](std::size_t n) { return random() % n; };
  std::string const right = encoded(wire::request{.files = {{"/a", "3"}}, .waits = true});
  for (int n = 0; n < 3000; ++n) {
    std::string message = right;
    for (std::size_t changes = below(4); changes > 0; --changes)
      message[below(message.size())] = static_cast<char>(random());
    if (below(4) == 0) message.resize(below(message.size()));
    std::string bytes = below(8) == 0 ? message : wire::framed(message);
    if (below(8) == 0) bytes.resize(below(bytes.size()));
    requests.clear();
    peers.clear();
    answers_to(bytes);
    for (auto const& asked : requests)
      for (auto const& file : asked.files) ASSERT_EQ(file.path[0], '/') << "seed " << seed;
  }
  EXPECT_EQ(answers_to(wire::framed(right)), "1,");
  EXPECT_EQ(server_.connections(), 0u);
}

// The process that hands over is another one: nobody can answer it from its own thread.
class starting : public testing::Test {
 protected:
  starting() {
    ::setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
    ::setenv("CUSTOM_APP_NAME", "quirnote-test", 1);
  }
  ~starting() override {
    for (char const* name : {"XDG_RUNTIME_DIR", "CUSTOM_APP_NAME", "RELAUNCH", "ACTIVATE"})
      ::unsetenv(name);
  }

  /// What another process's start comes to: its status, or 50 if it goes on.
  static pid_t start() {
    pid_t const child = ::fork();
    if (child == 0) {
      int result = 51;
      {
        wyn::application_t application;
        result = application.hand_over({.files = {{"/a", ""}}}).value_or(50);
      }
      ::_exit(result);
    }
    return child;
  }
  static int status_of(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  temporary_folder folder_;
  headless::headless_run_loop loop_;
};

TEST_F(starting, hands_over_to_the_instance_and_goes_on_without_one) {
  EXPECT_EQ(status_of(start()), 50);
  std::vector<wire::request> requests;
  {
    wyn::application_t instance;
    ASSERT_FALSE(instance.hand_over({}));
    EXPECT_EQ(instance.pid_path(), folder_ / "Quirnote/quirnote-test.pid");
    QuirnoteServer server(instance.socket(), loop_, [&](auto const& asked, auto const& from) {
      requests.push_back(asked);
      from->send({});
    });
    pid_t const child = start();
    while (requests.empty()) loop_.run_for(0);
    EXPECT_EQ(status_of(child), 0);
    EXPECT_EQ(requests.at(0).files.at(0).path, "/a");
  }
  // It has left nothing, and who waited for its answer when it ended takes its place.
  EXPECT_TRUE(std::filesystem::is_empty(folder_ / "Quirnote"));
  auto ending = std::make_unique<wyn::application_t>();
  ASSERT_FALSE(ending->hand_over({}));
  pid_t const child = start();
  platform::descriptor asked;
  while (!asked.is_open())
    asked = platform::descriptor(::accept(ending->socket().get(), nullptr, nullptr));
  ending.reset();
  asked.close();
  EXPECT_EQ(status_of(child), 50);
}

TEST_F(starting, with_RELAUNCH_ends_the_instance_by_the_signal_for_it) {
  for (auto const& [value, signal] : {std::pair{"1", SIGINT}, {"QUICK", SIGTERM}}) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    pid_t const instance = ::fork();
    if (instance == 0) {
      wyn::application_t application;
      application.hand_over({});
      [[maybe_unused]] ssize_t const told = ::write(ready[1], "", 1);
      while (true) ::pause();
    }
    char byte;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ::setenv("RELAUNCH", value, 1);
    wyn::application_t next;
    EXPECT_TRUE(next.is_to_be_activated());
    EXPECT_EQ(std::getenv("RELAUNCH"), nullptr);
    EXPECT_EQ(next.hand_over({}), std::nullopt);
    EXPECT_TRUE(next.socket().is_open());
    EXPECT_EQ(status_of(instance), -signal);
    ::close(ready[0]);
    ::close(ready[1]);
  }
}

}  // namespace
}  // namespace server
