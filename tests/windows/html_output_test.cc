#include "commands/ending_children.h"
#include "commands/output_results.h"
#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "settings/store.h"
#include "windows/html_outputs.h"
#include "windows/page_urls.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using headless::headless_html_window;
using kind = platform::page_link::kind;
constexpr char const* stop_title = "Stop task before closing?";

class html_output_test : public testing::Test {
 protected:
  html_output_test() { std::signal(SIGPIPE, SIG_IGN); }  // as in the program
  headless_html_window& run(std::string const& script, plist::dictionary more = {},
                            std::string const& input = "") {
    more.insert_or_assign("command", script);
    more.emplace("uuid", "U");
    more.emplace("name", "Name");
    outputs.run_command(more, input, {{"QN_X", "x y"}}, folder.path());
    return *desktop.html_windows.back();
  }
  /// Turns the loop until it is so; real processes run meanwhile.
  template <typename condition>
  testing::AssertionResult until(condition const& is_so) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
      desktop.loop().run_for(0.02);
      for (auto* window : desktop.html_windows) window->read();
      if (is_so()) return testing::AssertionSuccess();
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return testing::AssertionFailure() << "gave up";
  }
  testing::AssertionResult until_done(headless_html_window& window) {
    return until([&] { return !window.busy; });
  }
  static WynHTMLOutputManager& manager_of(headless_html_window& window) {
    return static_cast<WynHTMLOutputManager&>(*window.delegate());
  }
  /// The answer to what a page's script asks; "refused", or "" as long as there is none.
  std::shared_ptr<std::string> ask(headless_html_window& window, std::string const& operation,
                                   std::string const& arguments,
                                   std::string const& origin = "qn-internal://local") {
    auto const got = std::make_shared<std::string>();
    window.delegate()->pageDidRequest(
        {origin, origin + "/page.html", operation, arguments,
         [got](std::optional<std::string> const& json) { *got = json.value_or("refused"); }});
    return got;
  }
  std::string answer(headless_html_window& window, std::string const& operation,
                     std::string const& arguments) {
    auto const got = ask(window, operation, arguments);
    EXPECT_TRUE(until([&] { return !got->empty(); })) << operation << " " << arguments;
    return *got;
  }

  own_defaults const settings;
  temporary_folder folder;
  headless::headless_desktop desktop;
  std::vector<commands::output_place> opened;
  platform::responder last;
  windows::html_outputs outputs{last, [this](auto const& place) { opened.push_back(place); }};
};

TEST_F(html_output_test, a_page_comes_while_the_command_runs) {
  ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
  auto& window = run("cat; echo \"$QN_X $PWD\"; printf 'no end'; read x <fifo; echo; echo last >&2",
                     {}, "input\n");
  std::string const first = "input\nx y " + folder.path() + "\nno end";
  // A page also gets the line that has no end yet.
  EXPECT_TRUE(until([&] { return window.shown == first; })) << window.shown;
  EXPECT_TRUE(window.busy);
  EXPECT_EQ(window.title, "Name");
  EXPECT_TRUE(window.visible);
  EXPECT_TRUE(window.url.starts_with("qn-internal://local/")) << window.url;
  folder.write("fifo", "go\n");
  EXPECT_TRUE(until_done(window));
  EXPECT_EQ(window.shown, first + "\nlast\n");
}

TEST_F(html_output_test, the_next_run_takes_the_window_of_one_that_has_ended) {
  auto& first = run("seq 3");
  first.seen = {{0, 700, 400, 300}, {400, 1000}};
  EXPECT_TRUE(until_done(first));
  EXPECT_EQ(&run("seq 4"), &first);
  // It shows the same part again, once there is enough of the page.
  EXPECT_TRUE(until_done(first));
  ASSERT_FALSE(first.scrolls.empty());
  EXPECT_EQ(first.scrolls.back(), (platform::point{0, 700}));
  EXPECT_EQ(first.shown, "1\n2\n3\n4\n");
  // One that runs is left alone, as is that of another command.
  auto& busy = run("sleep 100");
  EXPECT_EQ(&busy, &first);
  EXPECT_NE(&run("sleep 100"), &first);
  EXPECT_NE(&run("sleep 100", {{"uuid", "V"}}), &first);
  EXPECT_EQ(desktop.html_windows.size(), 3u);
}

TEST_F(html_output_test, a_page_follows_its_output_unless_one_scrolls_up) {
  auto const grow = [](headless_html_window& window, double height) {
    window.seen.content = {400, height};
    window.seen.visible.width = 400;
    window.seen.visible.height = 300;
    window.delegate()->pageDidChangeFrame();
  };
  auto const scroll = [](headless_html_window& window, double y) { window.scroll_to({0, y}); };
  auto& window = run("sleep 100", {{"autoScrollOutput", true}});
  grow(window, 500);
  EXPECT_EQ(window.seen.visible.y, 200);
  scroll(window, 100);
  grow(window, 800);
  EXPECT_EQ(window.seen.visible.y, 100);
  scroll(window, 500);  // to the end again
  grow(window, 1200);
  EXPECT_EQ(window.seen.visible.y, 900);
  for (auto const& [key, follows] :
       std::map<std::string, bool>{{"x", false}, {"dontFollowNewOutput", true}}) {
    auto& other = run("sleep 100", {{key, 0}, {"uuid", key}});
    grow(other, 500);
    EXPECT_EQ(other.seen.visible.y == 200, follows) << key;
  }
}

TEST_F(html_output_test, closing_asks_while_the_command_runs) {
  auto& window = run("trap '' INT TERM HUP; echo $$; while :; do sleep 0.1; done");
  EXPECT_TRUE(until([&] { return window.shown.ends_with('\n'); }));
  pid_t const process = std::stoi(window.shown);
  EXPECT_FALSE(window.delegate()->windowShouldClose());
  EXPECT_EQ(desktop.alerts().shown.back().title, stop_title);
  EXPECT_EQ(desktop.alerts().shown.back().text,
            "The job that the task is performing will not be completed.");
  EXPECT_FALSE(outputs.askToStopAll());
  EXPECT_EQ(kill(process, 0), 0);
  desktop.alerts().answer(stop_title, "Stop Task");
  EXPECT_TRUE(outputs.askToStopAll());
  ASSERT_TRUE(window.delegate()->windowShouldClose());
  window.close();
  desktop.loop().run_for(0);
  EXPECT_TRUE(desktop.html_windows.empty());
  EXPECT_EQ(commands::ending_children::shared().count(), 1u);
  commands::ending_children::shared().kill_all();
  // It may be a zombie until the next one is started.
  EXPECT_TRUE(until([&] {
    std::string const state = temporary_folder::read("/proc/" + std::to_string(process) + "/stat");
    return state.empty() || state.find(") Z ") != state.npos;
  }));
  auto& done = run("true");
  EXPECT_TRUE(until_done(done));
  desktop.alerts().shown.clear();
  EXPECT_TRUE(done.delegate()->windowShouldClose());
  EXPECT_TRUE(desktop.alerts().shown.empty());
}

TEST_F(html_output_test, where_a_window_was_is_kept_by_command) {
  auto& window = run("true");
  EXPECT_TRUE(until_done(window));
  window.place = "there";
  window.close();
  EXPECT_EQ(run("true").place, "there");
  auto& other = run("true", {{"uuid", "V"}});
  EXPECT_EQ(other.place, "");
  // One that is open when the program ends.
  other.place = "elsewhere";
  outputs.keepPlacements();
  EXPECT_EQ(settings::store().dictionary("WynHTMLOutputFrames")["HTML Output V"], "elsewhere");
}

// A page that doesn't read holds the command up, and nothing fills memory meanwhile.
TEST_F(html_output_test, a_flood_waits_for_the_page_and_asks_for_more) {
  auto& window = run("yes '0123456789 0123456789' | head -c 3000000; echo; yes no");
  for (int i = 0; i < 50; ++i) {
    desktop.loop().run_for(0.01);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_LE(window.page->available(), 2 * platform::page_stream::capacity);
  platform::user_defaults::standard().set("WynCommandOutputLimit", 1);
  EXPECT_TRUE(until([&] { return window.shown.find("no\nno\n") != std::string::npos; }));
  window.delegate()->performSelectorWithObject("stopTask:", {});
  EXPECT_TRUE(until_done(window));
  auto& second = run("yes");  // of which only so much is read
  desktop.alerts().answer("Show more output?", "Show More");
  EXPECT_TRUE(until([&] { return second.shown.size() > 1'500'000; }));
  desktop.alerts().answer("Show more output?", "Stop Task");
  EXPECT_TRUE(until_done(second));
  EXPECT_LT(second.shown.size(), 6'000'000u);
  // What many short lines and elements take of memory counts, too.
  platform::user_defaults::standard().set("WynCommandOutputLimit", 4);
  std::size_t long_lines = 0;
  for (char const* script :
       {"yes 'a line of many words that takes little beside its text'", "yes", "yes '<b>x</b>'"}) {
    auto& each = run(script);
    EXPECT_TRUE(until_done(each));
    if (long_lines == 0)
      long_lines = each.shown.size();
    else
      EXPECT_LT(2 * each.shown.size(), long_lines + 100'000) << script;
  }
}

TEST_F(html_output_test, commands_end_in_all_ways) {
  struct {
    char const* script;
    char const* shown;
  } const cases[] = {{"exit 3", ""},
                     {"kill -9 $$", ""},
                     {"exec >&- 2>&-; sleep 0.1", ""},
                     {"echo a; sleep 100 &", "a\n"},  // which holds the pipe
                     {"printf '\\0\\xff\\xc3'", nullptr},
                     {"#!/no/such/interpreter", nullptr},
                     {"echo b; kill -INT 0", "b\n"}};
  for (auto const& each : cases) {
    auto& window = run(each.script);
    EXPECT_TRUE(until_done(window)) << each.script;
    EXPECT_TRUE(each.shown == nullptr || window.shown == each.shown) << each.script;
  }
  EXPECT_NE(run("#!/no/such/interpreter").shown, "never");
}

TEST_F(html_output_test, a_text_is_shown_with_links_to_a_known_place) {
  folder.write("a.c", "");
  outputs.show_output("<html><head></head><pre>a.c:7: x", plist::dictionary{{"uuid", "T"}}, {},
                      folder.path());
  auto& window = *desktop.html_windows.back();
  EXPECT_TRUE(until_done(window));
  EXPECT_EQ(window.title, "HTML Output");
  EXPECT_FALSE(window.url.starts_with("qn-internal:"));
  EXPECT_TRUE(window.shown.starts_with("<html><head><base href=\"file://localhost/"))
      << window.shown;
  std::string const link = "qn-open:?file=" + folder.path() + "/a.c&amp;line=7";
  EXPECT_NE(window.shown.find("<a href=\"" + link + "\">a.c:7</a>"), std::string::npos);
  ASSERT_EQ(commands::output_results::shared().places().size(), 1u);

  // What may run commands is known by where the page comes from.
  testing::internal::CaptureStderr();
  EXPECT_EQ(*ask(window, "system", "text=touch%20" + folder.path() + "/ran", "qn-shown://local"),
            "refused");
  std::string const log = testing::internal::GetCapturedStderr();
  EXPECT_EQ(
      log,
      "SECURITY WARNING: Quirnote.system() can only be used on dynamically loaded or locally "
      "hosted pages.\nOffending page was loaded from qn-shown://local/page.html (qn-shown)\n");
  for (char const* origin : {"http://x", "null", "file://", "", "qn-internalx://local"})
    EXPECT_EQ(*ask(window, "system", "text=touch%20" + folder.path() + "/ran", origin), "refused");
  EXPECT_FALSE(folder.names().contains("ran"));
}

TEST_F(html_output_test, scripts_run_commands) {
  auto& window = run("true");
  EXPECT_TRUE(until_done(window));
  EXPECT_EQ(answer(window, "system",
                   "text=echo%20%22%24QN_X%22%3B%20pwd%3B%20echo%20e%20%3E%262%3B%20exit%203"),
            R"({"output":"x y\u000a/tmp\u000a","error":"e\u000a","ended":true,"status":3})");
  // Half a character waits for its other half; its end doesn't come whole.
  EXPECT_EQ(answer(window, "start",
                   "text=printf%20'%5Cxc3'%3B%20read%20x%3B%20printf%20'%5Cxa9%5Cxe2%5Cx82'"),
            R"({"id":2})");
  auto const half = ask(window, "next", "id=2");
  desktop.loop().run_for(0.1);
  EXPECT_EQ(*half, "");
  EXPECT_EQ(answer(window, "write", "id=2&text=x%0A"), "{}");
  EXPECT_TRUE(until([&] { return !half->empty(); }));
  EXPECT_TRUE(half->starts_with(R"({"output":")"
                                "\u00E9"))
      << *half;
  std::string all = *half;
  while (all.find("\"ended\":true") == all.npos) all += answer(window, "next", "id=2");
  EXPECT_NE(all.find("\uFFFD"), all.npos);
  EXPECT_EQ(answer(window, "next", "id=2"), "refused");

  EXPECT_EQ(answer(window, "start", "text=cat%20%3E%262"), R"({"id":3})");
  EXPECT_EQ(answer(window, "write", "id=3&text=%22%5C%01"), "{}");
  EXPECT_EQ(answer(window, "close", "id=3"), "{}");
  EXPECT_EQ(answer(window, "next", "id=3").substr(0, 34), R"({"output":"","error":"\"\\\u0001",)");
  EXPECT_EQ(answer(window, "start", "text=sleep%20100"), R"({"id":4})");
  EXPECT_EQ(answer(window, "cancel", "id=4"), "{}");
  EXPECT_EQ(answer(window, "next", "id=4"), R"({"output":"","error":"","ended":true,"status":-1})");

  // A page may guess the number of a command for whose end it waits, and ask for its progress.
  auto const whole = ask(window, "system", "text=read%20x");
  auto const part = ask(window, "next", "id=5");
  EXPECT_EQ(answer(window, "close", "id=5"), "{}");
  EXPECT_TRUE(until([&] { return !whole->empty() && !part->empty(); }));

  EXPECT_EQ(answer(window, "busy", ""), R"({"busy":false})");
  EXPECT_EQ(answer(window, "busy", "value=true"), R"({"busy":true})");
  EXPECT_TRUE(window.busy);
  testing::internal::CaptureStderr();
  EXPECT_EQ(answer(window, "log", "text=hello"), "{}");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "Quirnote: hello\n");
  for (char const* bad : {"id=%2", "id=99", "", "id=x&text=y", "id=-1"})
    EXPECT_EQ(answer(window, "next", bad), "refused") << bad;
  EXPECT_EQ(answer(window, "start", "text=a%00b"), "refused");
  EXPECT_EQ(answer(window, "other", ""), "refused");
}

// However many a page begins, there are never more than so many; they end with the page.
TEST_F(html_output_test, commands_of_scripts_are_few_and_end_with_the_page) {
  auto& window = run("true");
  EXPECT_TRUE(until_done(window));
  std::vector<std::shared_ptr<std::string>> answers;
  for (int i = 0; i < 200; ++i) answers.push_back(ask(window, "system", "text=exec%20sleep%20100"));
  auto const refused = std::count_if(answers.begin(), answers.end(),
                                     [](auto const& each) { return *each == "refused"; });
  EXPECT_EQ(refused, 200 - 64);
  auto const flood = ask(window, "system", "text=yes");
  EXPECT_EQ(*flood, "refused");
  run("true");
  auto const ended = std::count_if(answers.begin(), answers.end(), [](auto const& each) {
    return each->find("\"ended\":true") != each->npos;
  });
  EXPECT_EQ(ended, 64);
  commands::ending_children::shared().kill_all();
  EXPECT_EQ(answer(window, "start", "text=cat"), R"({"id":1})");  // again from the first
  // What a command doesn't read isn't taken without end.
  EXPECT_EQ(answer(window, "start", "text=sleep%20100"), R"({"id":2})");
  auto const waits = ask(window, "write", "id=2&text=" + std::string(3'000'000, 'x'));
  desktop.loop().run_for(0.1);
  EXPECT_EQ(*waits, "");
  EXPECT_EQ(answer(window, "cancel", "id=2"), "{}");
}

TEST_F(html_output_test, links_lead_to_files_and_places_alone) {
  folder.write("a b.html", "");
  std::string const url = "qn-file://" + folder.path() + "/a%20b.html#part", missing = url + "%";
  auto& window = run("true");
  auto const link = [&](std::string const& to,
                        std::string const& from = "qn-internal://local/1.html") {
    return window.delegate()->linkForURL(to, from);
  };
  EXPECT_EQ(link(url).what, kind::load);
  EXPECT_EQ(window.delegate()->fileForURL(url), folder / "a b.html");
  EXPECT_EQ(link("qn-file://localhost" + folder.path() + "/a%20b.html").what, kind::load);
  EXPECT_EQ(link("qn-file:" + folder.path() + "/a%20b.html?x").what, kind::load);
  auto const instead = link("qn-file:///no/such&file");
  EXPECT_EQ(instead.what, kind::instead);
  EXPECT_TRUE(instead.url.starts_with("file://localhost/")) << instead.url;
  EXPECT_TRUE(instead.url.ends_with(
      "/html/error_not_found.html?url=qn-file%3A%2F%2F%2Fno%2Fsuch%26file&error=1"))
      << instead.url;
  EXPECT_EQ(link("file:///etc/hostname").what, kind::load);
  // The base of a text that is shown makes a link within it one to another page.
  EXPECT_EQ(link("qn-internal://local/1.html#b").what, kind::load);
  std::string const base = page_urls::error_page();
  for (std::string const& shown :
       {base, "file://" + base.substr(std::string("file://localhost").size())}) {
    EXPECT_EQ(link(shown + "#b", "qn-shown://local/1.html#a").url, "qn-shown://local/1.html#b");
    EXPECT_EQ(link(shown + "#b").what, kind::load);
  }
  testing::internal::CaptureStderr();
  EXPECT_EQ(link(url, "file:///home/me/page.html").what, kind::refuse);
  for (char const* other :
       {"qn-internal://local/1.html", "qn-internal://local/2.html#b", "http://x/", "https://x",
        "ftp://x", "javascript:alert(1)", "x", "", "qn-open:?file=/no/such&line=1",
        "qn-open:?file=/dev/zero", "view-source:x"})
    EXPECT_EQ(link(other).what, kind::refuse) << other;
  testing::internal::GetCapturedStderr();
  desktop.loop().run_for(0);
  EXPECT_TRUE(opened.empty());
  EXPECT_EQ(link("qn-open:?file=" + folder.path() + "/a%20b.html&line=4&column=2").what,
            kind::refuse);
  desktop.loop().run_for(0);
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0].file, folder / "a b.html");
  EXPECT_EQ(opened[0].line, 4u);
}

TEST_F(html_output_test, a_lost_page_is_offered_again) {
  auto& window = run("echo $((++n)) >>count; seq 30000");
  window.delegate()->pageProcessDidEnd();
  EXPECT_NE(window.message, "");
  EXPECT_TRUE(until_done(window));
  window.delegate()->performSelectorWithObject("reloadOutput:", {});
  EXPECT_EQ(window.message, "");
  EXPECT_TRUE(until_done(window));
  EXPECT_TRUE(window.shown.ends_with("30000\n"));
  EXPECT_EQ(temporary_folder::read(folder / "count"), "1\n1\n");
  window.delegate()->performSelectorWithObject("printDocument:", {});
  EXPECT_EQ(window.prints, 1);
}

TEST(page_base, stands_where_a_head_begins) {
  std::string const base = "<base href=\"u\">";
  for (auto const& [html, expected] : std::vector<std::pair<std::string, std::string>>{
           {"text", base + "text"},
           {"<!DOCTYPE html><p>x", "<!DOCTYPE html>" + base + "<p>x"},
           {" <html lang='>'>\n<HEAD a=b><title><base></title>",
            " <html lang='>'>\n<HEAD a=b>" + base + "<title><base></title>"},
           {"<!-- <head> --><body><head>", "<!-- <head> -->" + base + "<body><head>"},
           {"<head><base href='x'>", "<head><base href='x'>"}})
    EXPECT_EQ(page_urls::with_base(html, "u"), expected);
}

}  // namespace
