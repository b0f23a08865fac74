#include "app/app_fixture.h"
#include "documents/safety_copy.h"

namespace {

constexpr char const* title = "Unsaved Text Was Found";

class left_over_text : public app_test {
 protected:
  void leave(std::string const& path, std::string const& bytes) {
    std::optional<documents::safety_copy> copy;
    ASSERT_FALSE(documents::safety_copy::create({path, "untitled", {}, true},
                                                path::contents_of(bytes), copy));
  }
  std::string shown(windows::document_window* controller) {
    auto& view = controller->textView();
    std::string text;
    for (std::size_t line = 0; line < view.view()->storage->lines(); ++line)
      for (char16_t unit : view.view()->storage->line_units(line)) text += char(unit);
    return text;
  }
};

TEST_F(left_over_text, is_offered_at_the_start_until_it_is_dealt_with) {
  std::string const file = folder.write("notes", "a\nb\nc\n");
  leave(file, "a\nB\nc\nd\n");
  app().didFinishLaunching();
  desktop.loop().run_for(0);
  ASSERT_EQ(desktop.alerts().shown.size(), 1u);
  std::string const text = desktop.alerts().shown[0].text;
  EXPECT_NE(text.find("2 lines would be added and 1 line removed.\n\n- b\n+ B\n+ d"), text.npos)
      << text;
  EXPECT_EQ(alerts(), titles{std::string(title) + "|Keep for Later"});

  answer(title, "Compare");
  perform(*app().orderedControllers()[0], "offerSafetyCopies:");
  EXPECT_NE(shown(app().orderedControllers()[0]).find("@@ -1,4 +1,5 @@ a-b+B c+d "), text.npos)
      << shown(app().orderedControllers()[0]);

  answer(title, "Restore");
  perform(*app().orderedControllers()[0], "offerSafetyCopies:");
  EXPECT_EQ(windows()[0], "*notes");
  EXPECT_EQ(shown(app().orderedControllers()[0]), "aBcd");
  EXPECT_EQ(folder.read(file), "a\nb\nc\n");
  EXPECT_EQ(alerts().size(), 2u);
  perform(*app().orderedControllers()[0], "offerSafetyCopies:");  // this program has it already
  EXPECT_EQ(alerts(), titles());
}

TEST_F(left_over_text, is_kept_by_an_end_that_asks_nothing) {
  auto* const file = app().openFile(folder.write("file", "caf\xE9 \n"));
  app().openFile(folder.write("untouched", "text"));
  app().newDocument();
  type(*app().orderedControllers()[0], u"no name");
  type(*file, u"\u20AC");  // which the charset of the file doesn't have
  auto const charset = file->textDocument()->fileEncoding();
  app().applicationMustTerminate();
  type(*file, u"!");
  app().applicationMustTerminate();  // such as a log-out that was cancelled, and then a signal
  EXPECT_EQ(folder.read(folder / "file"), "caf\xE9 \n");
  EXPECT_EQ(alerts(), titles());

  answer(title, "Restore");
  restart();
  EXPECT_EQ(alerts().size(), 2u);
  EXPECT_EQ(windows(), (titles{"*untitled", "*file"}));
  auto* const restored = app().orderedControllers()[1];
  EXPECT_EQ(restored->textDocument()->storage().line_units(0), u"\u20AC!caf\u00E9 ");
  EXPECT_EQ(restored->textDocument()->fileEncoding(), charset);
  EXPECT_EQ(window_of(*restored).values["fileEncoding"], plist::value("Latin 1"));
  EXPECT_EQ(shown(app().orderedControllers()[0]), "no name");

  answer("Encoding Error", "Save as UTF-8");
  EXPECT_TRUE(perform(*restored, "saveDocument:"));
  EXPECT_EQ(alerts().size(), 1u);
  app().applicationMustTerminate();
  restart();
  EXPECT_EQ(alerts().size(), 1u);  // of the text that is still unsaved
  answer_save("untitled 2", "Don't Save");
  EXPECT_TRUE(app().applicationShouldTerminate());
  restart();
  EXPECT_EQ(alerts().size(), 1u);  // the question

  // A file may have been overwritten in part: then only its owner can say that the copy isn't
  // needed.
  leave(folder / "untouched", "tex-");
  restart();
  answer_save("untouched", "Don't Save");
  EXPECT_TRUE(app().applicationShouldTerminate());
  restart();
  EXPECT_EQ(alerts().size(), 3u);
}

TEST_F(left_over_text, of_no_file_is_offered_too_and_can_be_discarded) {
  leave("", "lost");
  leave(folder / "vanished/file", "also lost");
  leave(folder.write("saved", "same"), "same");
  answer(title, "Restore");
  app().didFinishLaunching();
  desktop.loop().run_for(0);
  EXPECT_EQ(alerts().size(), 2u);
  EXPECT_EQ(windows(), (titles{"*file", "*untitled 2"}));
  EXPECT_EQ(shown(app().orderedControllers()[1]), "lost");

  leave("", "unwanted");
  answer(title, "Discard");
  perform(*app().orderedControllers()[0], "offerSafetyCopies:");
  perform(*app().orderedControllers()[0], "offerSafetyCopies:");
  EXPECT_EQ(alerts().size(), 1u);
}

/// As long as it lives no file of this process takes a byte.
class full_disks {
 public:
  full_disks() {
    getrlimit(RLIMIT_FSIZE, &former_);
    rlimit const none{0, former_.rlim_max};
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &none);
  }
  ~full_disks() { setrlimit(RLIMIT_FSIZE, &former_); }

 private:
  rlimit former_{};
};

// Whatever ends the program: the text is kept, what is held for it too where nothing will go on, or
// the end is a failure.
TEST_F(left_over_text, is_kept_by_every_end_or_its_loss_is_a_failure) {
  auto* const file = app().openFile(folder.write("file", "old"));
  auto const waiting = [&](auto const& end) {
    platform::waiting::scope const scope(desktop.waits(), [] {});
    platform::key_event event;
    event.characters = event.characters_ignoring_modifiers = u"k";
    window_of(*file).host.send_key(event);
    return end();
  };
  struct {
    char const* name;
    std::function<bool()> end;  // false if text is lost
  } const ends[] = {
      {"log-out that asks nothing", [&] { return desktop.end_session(app(), false); }},
      {"log-out while something waits",
       [&] { return waiting([&] { return desktop.end_session(app(), true); }); }},
      {"lost display", [&] { return desktop.end_within_exit(app()); }},
      {"lost display while something waits",
       [&] { return waiting([&] { return desktop.end_within_exit(app()); }); }},
      {"signal",
       [&] {
         desktop.end_at_once(app());
         return !desktop.has_lost_text();
       }},
  };
  for (auto const& c : ends)
    for (bool const full : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (full ? ", full disks" : ""));
      type(*file, u"x");
      {
        auto const none = full ? std::make_unique<full_disks>() : nullptr;
        EXPECT_EQ(c.end(), !full);
      }
      EXPECT_EQ(desktop.has_lost_text(), full);
      std::set<std::string> kept;
      for (auto const& entry : std::filesystem::directory_iterator(folder / "state/Quirnote"))
        if (entry.path().filename().string().starts_with("SafetyCopy-")) {
          std::string const bytes = folder.read(entry.path());
          kept.insert(bytes.substr(bytes.find("</plist>\n") + 9));
        }
      std::string const text = shown(file);
      if (!full) EXPECT_EQ(kept, std::set<std::string>{text});
      desktop.loop().run_for(0);  // where the program goes on, what was held comes now
    }
}

}  // namespace
