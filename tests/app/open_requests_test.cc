#include "app/open_requests.h"

#include "app/app_fixture.h"
#include "app/quirnote_url.h"
#include "platform/utf.h"
#include "wire/client.h"
#include "wire/local_socket.h"

#include <sys/mman.h>

using namespace app;

// What other processes ask for, and what they are told.
namespace {

class open_requests_test : public app_test {
 protected:
  open_requests_test() {
    for (char const* name : {"a", "b"}) folder.write(name, "1\n2\n3\n");
    defaults().set("WynOpenFilesTogether", false);
  }
  ~open_requests_test() override { turn(); }

  void turn() {
    for (int n = 0; n < 4; ++n) desktop.loop().run_for(0);
  }
  wire::client ask(wire::request const& request, int passed = -1) {
    wire::client client(folder.path(), "name");
    EXPECT_TRUE(client.send(request, passed));
    turn();
    EXPECT_EQ(told(client), "result ");
    return client;
  }
  /// The answers that have come.
  static std::string told(wire::client& client) {
    std::string result;
    while (auto const answer = client.receive(0)) {
      using kind = wire::answer::kind;
      result += answer->what == kind::result   ? "result "
                : answer->what == kind::failed ? "no "
                                               : "";
      if (answer->what == kind::closed)
        result += std::to_string(answer->file) + (answer->is_saved ? "+ " : "- ");
    }
    return result;
  }
  windows::document_window& front() { return *app().orderedControllers().front(); }
  void close_front() {
    perform(front(), "performClose:");
    turn();
  }
  wire::request waiting_for(strings const& names) {
    wire::request request{.waits = true, .waiter = "git"};
    for (auto const& name : names) request.files.push_back({folder / name, "2:2"});
    return request;
  }
  static platform::descriptor memory(std::string const& text) {
    platform::descriptor file(::memfd_create("test", MFD_CLOEXEC));
    EXPECT_EQ(::write(file.get(), text.data(), text.size()), ssize_t(text.size()));
    ::lseek(file.get(), 0, SEEK_SET);
    return file;
  }
  static std::string content(platform::descriptor const& file) {
    std::string text(100, '\0');
    text.resize(static_cast<std::size_t>(::pread(file.get(), text.data(), text.size(), 0)));
    return text;
  }

  int error_ = 0;
  platform::descriptor socket_ = wire::listen_at(folder.path(), "name.socket", error_);
  open_requests requests_{app()};
  server::QuirnoteServer server_{
      socket_, desktop.loop(),
      [this](auto const& asked, auto const& from) { requests_.take(asked, from); }};
};

TEST_F(open_requests_test, files_open_at_their_places_and_tell_when_they_are_closed) {
  auto client = ask(waiting_for({"a", "b", "a"}));
  EXPECT_EQ(windows(), titles({"a \u2014 awaited by git", "b \u2014 awaited by git"}));
  EXPECT_EQ(front().textView().view()->selection.current_mark.base.pos(), text::pos(1, 1));
  EXPECT_TRUE(app().recentFiles().paths().empty());
  close_front();
  EXPECT_EQ(told(client), "0+ 2+ ");
  type(front(), u"x");
  answer_save("b", "Don't Save");
  close_front();
  EXPECT_EQ(told(client), "1- ");
}

TEST_F(open_requests_test, quitting_tells_what_has_been_saved_but_not_an_end_by_force) {
  for (bool const by_force : {false, true}) {
    auto client = ask(waiting_for({"a", "b"}));
    type(front(), u"x");
    if (by_force) {
      desktop.end_at_once(app());
    } else {
      answer_save("b", "Save");
      EXPECT_TRUE(app().applicationShouldTerminate());
    }
    while (!app().orderedControllers().empty()) front().window().close();
    turn();
    EXPECT_EQ(told(client), by_force ? "" : "1+ 0+ ");
  }
}

TEST_F(open_requests_test, options_and_folders) {
  app().newDocument();
  auto request = waiting_for({"a"});
  request.in_new_window = request.adds_to_recent = request.changes_directory = true;
  ask(request);
  turn();  // who has asked has left
  EXPECT_EQ(windows(), titles({"a", "untitled"}));
  EXPECT_EQ(app().recentFiles().paths(), strings({folder / "a"}));
  EXPECT_EQ(app().currentDirectory(), folder.path());
  // Who waits for a folder, or for what can't be opened, is let go at once.
  wire::client client(folder.path(), "name");
  client.send({.files = {{folder.path(), ""}, {"/dev/zero", ""}}, .waits = true});
  turn();
  EXPECT_EQ(told(client), "result 0+ 1- ");
}

TEST_F(open_requests_test, two_files_are_compared) {
  folder.write("b", "1\n3\n3");
  auto request = waiting_for({"a", "b"});
  request.shows_differences = true;
  auto client = ask(request);
  EXPECT_EQ(windows(), titles({"untitled \u2014 awaited by git"}));
  EXPECT_EQ(unicode::to_utf8(front().textDocument()->storage().whole_text()),
            "--- " + folder / "a" + "\n+++ " + folder / "b" +
                "\n@@ -1,3 +1,3 @@\n 1\n-2\n 3\n+3\n\\ No newline at end of file\n");
  close_front();
  EXPECT_EQ(told(client), "0+ 1+ ");
  for (auto const& [other, answers] : {std::pair("a", "result 0+ 1+ "), {"c", "result 0- 1- "}}) {
    request.files[1].path = folder / other;
    wire::client next(folder.path(), "name");
    next.send(request);
    turn();
    EXPECT_EQ(told(next), answers) << other;
  }
  EXPECT_EQ(alerts(), titles({"No Differences|Continue", "Couldn't Compare|Continue"}));
}

TEST_F(open_requests_test, standard_input_is_a_document_whose_text_goes_back) {
  auto const file = memory("one\n");
  auto client = ask({.waits = true, .has_input = true, .waiter = "sort"}, file.get());
  EXPECT_EQ(windows(), titles({"untitled \u2014 awaited by sort"}));
  type(front(), u"zero ");
  close_front();
  EXPECT_EQ(alerts(), titles());
  EXPECT_EQ(told(client), "0+ ");
  EXPECT_EQ(content(file), "zero one\n");
}

TEST_F(open_requests_test, text_that_nobody_waits_for_any_more_is_asked_about) {
  auto const file = memory("one\n");
  ask({.waits = true, .has_input = true, .waiter = "sort"}, file.get());
  turn();
  EXPECT_EQ(windows(), titles({"*untitled"}));
  answer_save("untitled", "Don't Save");
  close_front();
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_EQ(content(file), "one\n");
}

// Asked for during the questions of a quit, whatever the answers.
TEST_F(open_requests_test, call_off_a_quit_until_they_are_open) {
  app().setRequests({.has_waiting = [this] { return requests_.has_taken(); },
                     .refuse = [this] { requests_.refuse(); }});
  for (bool const are_many : {false, true}) {
    for (auto const& name : are_many ? strings{"a", "c"} : strings{"a"}) {
      app().openFile(folder / name);
      type(front(), u"x");
    }
    answer_save("a", "Don't Save");
    answer(
        "You have 2 documents with unsaved changes. Do you want to review these changes before "
        "quitting?",
        "Discard Changes");
    desktop.alerts().while_open = [&] { ask({.files = {{folder / "b", ""}}}); };
    app().performSelectorWithObject("terminate:", {});
    desktop.alerts().while_open = {};
    EXPECT_FALSE(desktop.terminated);
    turn();
    EXPECT_EQ(windows(), are_many ? titles({"b", "*c", "*a"}) : titles({"b"}));
  }
  answer(
      "You have 2 documents with unsaved changes. Do you want to review these changes before "
      "quitting?",
      "Discard Changes");
  app().performSelectorWithObject("terminate:", {});
  EXPECT_TRUE(desktop.terminated);
  wire::client client(folder.path(), "name");
  client.send({.files = {{folder / "b", ""}}});
  turn();
  EXPECT_EQ(client.receive(0), std::nullopt);
}

TEST_F(open_requests_test, are_held_while_an_alert_waits) {
  app().openFile(folder / "a");
  type(front(), u"x");
  std::string during;
  std::unique_ptr<wire::client> client;
  desktop.alerts().while_open = [&] {
    client = std::make_unique<wire::client>(ask(waiting_for({"b"})));
    during = windows().front();
  };
  close_front();  // is cancelled
  turn();
  EXPECT_EQ(during, "*a");
  EXPECT_EQ(windows(), titles({"b \u2014 awaited by git", "*a"}));
}

TEST_F(open_requests_test, links_open_existing_files_and_nothing_else) {
  auto const open = [&](std::string const& url) {
    app().openURL(url);
    return desktop.beeps;
  };
  open("qrnt://open?url=file://" + folder / "a" + "&line=2&column=2");
  EXPECT_EQ(front().textView().view()->selection.current_mark.base.pos(), text::pos(1, 1));
  open("qrnt://open/?line=3");
  EXPECT_EQ(front().textView().view()->selection.current_mark.base.line, 2u);
  EXPECT_EQ(desktop.beeps, 0);
  EXPECT_EQ(open("qrnt://open"), 1);
  EXPECT_EQ(alerts(), titles());
  for (std::string const& url : strings{"file://" + folder / "new", "file:///dev/null",
                                        "http://x/y", "file://" + folder.path(), "file://%00"})
    open("qrnt://open?url=" + url);
  open("http://open");
  EXPECT_EQ(alerts(), titles(std::vector<std::string>(6, "Couldn't Open|Continue")));
  open("qrnt://run?url=file://" + folder / "b");
  EXPECT_EQ(alerts(), titles({"Unknown URL Scheme|Continue"}));
  EXPECT_EQ(windows(), titles({"a"}));
  EXPECT_TRUE(app().recentFiles().paths().empty());
  auto const home = parse_quirnote_url("qrnt://open?url=file://localhost/a%20b", "/home/me");
  EXPECT_EQ(home->path, "/a b");
  EXPECT_EQ(parse_quirnote_url("qrnt://open?url=file://x", "/home/me")->path, "/home/me/x");
}

}  // namespace
