#include "app/app_fixture.h"
#include "search/WynFindManager.h"

// What comes while something waits happens afterwards, in the order in which it came, whatever it
// is that waits.
namespace {

constexpr double a_while = 3;  // seconds, in which all news of files has come

// Each step of the outer repetition looks to the end of this text, without a limit being spent.
constexpr char const* endless = "(?:(?=.*)a)+b";
std::string const slow_text(5000, 'a');

constexpr char const* waits[] = {"alert", "prompt", "panel", "search", "replace all"};

class waiting : public app_test {
 protected:
  waiting() {
    path = folder.write("file", "one two\n");
    controller = app().openFile(path);
    controller->windowDidBecomeKey();
  }
  ~waiting() override { WynFindManager::sharedInstance().setOptions({}); }

  WynTextView& view() { return controller->textView(); }
  headless::headless_view_host& host() { return window_of(*controller).host; }
  std::string text() {
    std::u16string const units(view().view()->storage->begin_of_line(0),
                               view().view()->storage->end(-1));
    return {units.begin(), units.end()};
  }
  void key(char16_t unit) {
    platform::key_event event;
    event.characters = event.characters_ignoring_modifiers = unit;
    host().send_key(event);
  }

  // All that may come. What has an answer shows as an alert, in `log`.
  void arrive(std::string const& what) {
    if (what.starts_with("key ")) {
      for (char const c : what.substr(4)) key(static_cast<char16_t>(c));
    } else if (what == "click") {
      host().send([](platform::view_client& client) {
        client.mouse_down({{32, 2}, platform::mouse_button::left, 1, 0});
        client.mouse_up({{32, 2}, platform::mouse_button::left, 1, 0});
      });
    } else if (what == "preedit") {
      host().send([](platform::view_client& client) { client.set_marked_text(u"ka", 2, 0); });
    } else if (what == "commit") {
      host().send([](platform::view_client& client) { client.insert_text(u"K"); });
    } else if (what == "drop") {
      auto const content = std::make_shared<headless::memory_pasteboard>();
      content->set({{"text", "D"}});
      host().send([content](platform::view_client& client) {
        client.perform_drag_operation(
            {{32, 2}, platform::drag_operation::copy, 0, false, *content});
      });
    } else if (what == "change") {
      folder.write("file", "theirs\n");
      desktop.loop().run_for(a_while);
    } else if (what == "become key") {
      controller->windowDidBecomeKey();
    } else if (what == "quit") {
      desktop.request_quit(app());
    } else if (what == "signal") {
      desktop.end_at_once(app());
    }
  }

  // All that may wait; gives how often it looked at events.
  int wait_for(std::string const& what, std::function<void()> const& meanwhile) {
    int opened = 0;
    std::string const before = text();
    std::function<void()> const once = [&] {
      if (opened++ == 0) meanwhile();
      EXPECT_EQ(text(), before);
    };
    desktop.alerts().while_open = desktop.prompts().while_open = once;
    desktop.panels().while_open = desktop.busy().while_busy = once;
    if (what == "alert") {
      desktop.alerts().run({"Question", "", {"Yes", "No"}, 1});
    } else if (what == "prompt") {
      desktop.prompts().run("", "", "");
    } else if (what == "panel") {
      desktop.panels().run_save({});
    } else {
      desktop.busy().cancel_after = most_looks;
      view().findWithOptions({{"findString", endless},
                              {"action", what == "replace all" ? "replaceAll" : "findNext"},
                              {"replaceString", "x"},
                              {"replaceAllScope", "document"},
                              {"regularExpression", true}});
    }
    desktop.busy().cancel_after = std::nullopt;
    desktop.alerts().while_open = desktop.prompts().while_open = nullptr;
    desktop.panels().while_open = desktop.busy().while_busy = nullptr;
    EXPECT_EQ(text(), before);  // nothing yet, as who waited is still on the stack
    desktop.loop().run_for(a_while);
    return opened;
  }

  std::string path;
  windows::document_window* controller;
  int most_looks = 3;
};

TEST_F(waiting, holds_what_comes_and_does_it_in_order) {
  struct row {
    std::vector<std::string> arrivals;
    std::string text;  // of which the slow text is left out
    titles alerts;
  };
  std::string const warning = "File Changed on Disk|Keep Quirnote Version";
  row const rows[] = {
      {{"key xyz"}, "xyzS", {}},
      {{"key x", "click", "key y"}, "yxS", {}},
      {{"preedit", "commit", "key x"}, "KxS", {}},
      {{"key x", "drop"}, "DxS", {}},
      {{"key x", "change"}, "xS", {warning}},
      {{"change"}, "theirs\n", {}},
      {{"change", "become key", "change"}, "theirs\n", {}},
      {{"key x", "quit", "key y"},
       "xyS",
       {"Do you want to save the changes you made in the document \u201cfile\u201d?|Cancel"}},
  };
  for (std::string const what : waits)
    for (row const& r : rows) {
      SCOPED_TRACE(what + " " + r.arrivals.front() + " " + r.arrivals.back());
      folder.write("file", slow_text);
      view().replacingText(
          [&] { return controller->textDocument()->reopenWithEncoding(encoding::UTF8); });
      arrive("click");
      int const looks = wait_for(what, [&] {
        for (std::string const& arrival : r.arrivals) arrive(arrival);
      });
      EXPECT_GT(looks, 0);
      std::string now = text();
      if (auto const at = now.find(slow_text); at != now.npos)
        now.replace(at, slow_text.size(), "S");
      EXPECT_EQ(now, r.text);
      titles asked = alerts();
      std::erase(asked, "Question|No");
      EXPECT_EQ(asked, r.alerts);
      EXPECT_FALSE(desktop.terminated);
    }
}

// By the user, who gets an answer that loses nothing, or from outside; then nothing is asked.
TEST_F(waiting, is_cancelled_by_escape) {
  most_looks = 1000;
  folder.write("file", slow_text);
  desktop.loop().run_for(a_while);
  for (std::string const what : waits) {
    int const looks = wait_for(what, [&] { key(platform::function_key::escape); });
    EXPECT_EQ(looks, 1) << what;
  }
  EXPECT_EQ(WynFindManager::sharedInstance().options().at("statusText").string_or(""), "Cancelled");
}

class ending : public waiting, public testing::WithParamInterface<char const*> {};

TEST_P(ending, cancels_what_waits_and_keeps_what_was_typed_meanwhile) {
  most_looks = 1000;
  folder.write("file", slow_text);
  view().replacingText(
      [&] { return controller->textDocument()->reopenWithEncoding(encoding::UTF8); });
  arrive("click");
  int const looks = wait_for(GetParam(), [&] {
    for (char const* const arrival : {"key a", "quit", "signal"}) arrive(arrival);
  });
  EXPECT_EQ(looks, 1);
  EXPECT_TRUE(desktop.terminated);
  bool is_kept = false;
  for (auto const& file : std::filesystem::recursive_directory_iterator(folder / "state"))
    is_kept |= file.is_regular_file() && folder.read(file.path()).ends_with(slow_text + "a");
  EXPECT_TRUE(is_kept);
  std::size_t const asked = desktop.alerts().shown.size();
  EXPECT_EQ(desktop.alerts().run({"Question", "", {"Yes", "No"}, 1}), 1u);
  EXPECT_EQ(desktop.alerts().shown.size(), asked);
}

INSTANTIATE_TEST_SUITE_P(all, ending, testing::ValuesIn(waits));

// What is cancelled may have opened a dialog of its own, which is all that ends.
TEST_F(waiting, a_signal_cancels_until_nothing_waits) {
  int opened = 3;
  {
    platform::waiting::scope const scope(desktop.waits(), [&] { --opened; });
    arrive("signal");
    desktop.loop().run_for(a_while);
    EXPECT_LE(opened, 0);
  }
  desktop.loop().run_for(a_while);
  EXPECT_TRUE(desktop.terminated);
}

// A window's own key may have begun what waits, so it outlives that.
// Keys meant for the text would answer a question that comes by itself.
TEST_F(waiting, asks_about_a_changed_file_in_a_pause_of_typing) {
  std::string typed;
  for (int n = 0; n < 20; ++n) {
    key(u'x');
    typed += 'x';
    if (n % 6 == 1) folder.write("file", "theirs " + typed);
    desktop.loop().run_for(platform::waiting::pause * 0.9);
    EXPECT_EQ(desktop.alerts().shown.size(), 0U);
  }
  desktop.loop().run_for(a_while);
  EXPECT_EQ(desktop.alerts().shown.size(), 1U);
  EXPECT_EQ(text(), typed + "one two\n");
}

TEST_F(waiting, keeps_closed_windows_until_it_is_over) {
  std::weak_ptr<WynDocument> const document = controller->textDocument();
  wait_for("alert", [&] {
    controller->window().close();
    desktop.loop().run_for(a_while);
    EXPECT_FALSE(document.expired());
  });
  EXPECT_TRUE(document.expired());
}

// However the user comes back to the text that was saved once.
TEST_F(waiting, a_text_kept_against_its_file_is_edited_until_it_is_saved) {
  key(u'x');
  desktop.loop().run_for(0);
  folder.write("file", "theirs\n");
  desktop.loop().run_for(platform::file_watcher::rest * 1.5);
  EXPECT_EQ(alerts(), titles{});  // not asked yet, but seen
  EXPECT_EQ(windows(), titles{"*file (changed on disk)"});
  desktop.loop().run_for(a_while);
  EXPECT_EQ(alerts(), titles{"File Changed on Disk|Keep Quirnote Version"});
  perform(*controller, "undo:");
  EXPECT_EQ(windows(), titles{"*file (changed on disk)"});
  EXPECT_EQ(window_of(*controller).values["fileState"].string_or(""), "File Changed on Disk");
  perform(*controller, "performClose:");
  EXPECT_EQ(alerts().size(), 1U);
  EXPECT_EQ(windows(), titles{"*file (changed on disk)"});
  perform(*controller, "saveDocument:");
  EXPECT_EQ(windows(), titles{"file"});
  EXPECT_EQ(folder.read(path), "one two\n");
  // What can't be read, and what is no file, has nothing of the text either.
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  desktop.loop().run_for(a_while);
  EXPECT_EQ(windows(), titles{"*file (deleted)"});
  EXPECT_EQ(alerts(), titles{});
}

TEST_F(waiting, a_deleted_file_is_missed_at_once_when_its_window_closes) {
  std::string const title =
      "The file of the document \u201cfile\u201d was deleted. Do you want to save it?";
  for (bool const is_edited : {false, true}) {
    if (is_edited) type(*controller, u"x");
    std::filesystem::remove(path);
    EXPECT_TRUE(perform(*controller, "performClose:"));
    EXPECT_EQ(windows(), titles{"*file (deleted)"});
    EXPECT_EQ(window_of(*controller).values["fileState"].string_or(""), "File Deleted");
    EXPECT_EQ(alerts(), titles{title + "|Cancel"});
    folder.write("file", is_edited ? "xone two\n" : "one two\n");
    desktop.loop().run_for(a_while);
    EXPECT_EQ(windows(), titles{"file"});
    EXPECT_EQ(window_of(*controller).values["fileState"].string_or("?"), "");
  }
  std::filesystem::remove(path);
  answer(title, "Save");
  perform(*controller, "performClose:");
  EXPECT_EQ(folder.read(path), "xone two\n");
  EXPECT_EQ(windows(), titles{});
}

}  // namespace
