#include "actions/WynPasteboardManager.h"
#include "app/app_fixture.h"

using namespace app;

namespace {

class clips_over_restarts : public app_test {
 protected:
  clips_over_restarts() { WynPasteboardManager::sharedInstance().clear(); }

  static void copy(std::u16string text) {
    actions::set_current_clip({std::move(text), true, std::nullopt});
  }
  /// As a new process begins.
  std::vector<std::u16string> after_restart() {
    app().applicationWillResignActive();
    std::string const contents = content_of_file(file_);
    WynPasteboardManager::sharedInstance().clear();
    desktop.general_pasteboard().set({});
    app().applicationWillResignActive();
    std::ofstream(file_) << contents;
    restart();
    std::vector<std::u16string> texts;
    for (auto const& clip : WynPasteboardManager::sharedInstance().stack())
      texts.push_back((clip->rectangular ? u"" : u"?") + clip->text);
    return texts;
  }
  void keep(bool kept) { defaults().set("WynClipboardHistoryKept", kept); }

  std::string const file_ = folder / "state/ClipboardHistory.plist";
};

using texts = std::vector<std::u16string>;

TEST_F(clips_over_restarts, are_kept_if_wanted_and_for_nobody_else) {
  copy(u"a");
  app().applicationWillResignActive();
  EXPECT_FALSE(std::filesystem::exists(file_));
  keep(true);
  texts const odd{std::u16string(u"\0\xd800]]>", 5), u"a"};
  copy(odd[0]);
  app().applicationWillResignActive();
  ::chmod(file_.c_str(), 0644);
  copy(u"b");
  EXPECT_EQ(after_restart(), (texts{u"b", odd[0], u"a"}));
  EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
  keep(false);
  EXPECT_EQ(after_restart(), texts());
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(clips_over_restarts, end_when_they_are_cleared) {
  keep(true);
  copy(u"password");
  app().applicationWillResignActive();
  EXPECT_TRUE(app().tryToPerformWith("clearPasteboardHistory:", {}));
  EXPECT_EQ(after_restart(), texts());
}

TEST_F(clips_over_restarts, are_read_from_any_file) {
  for (char const* contents :
       {"", "<plist", "<plist><string>a</string></plist>",
        "<plist><array><string>a</string><dict/><dict><key>Content</key><data>YQ==</data>"
        "<key>Indent</key><integer>-9</integer><key>Column</key><string>x</string></dict>"
        "</array></plist>"}) {
    keep(true);
    after_restart();
    std::ofstream(file_) << contents;
    WynPasteboardManager::sharedInstance().clear();
    std::string const report = errors_of([&] { clip_history_file(file_).load(); });
    bool const is_list = std::string_view(contents).find("<array>") != std::string::npos;
    EXPECT_EQ(WynPasteboardManager::sharedInstance().stack().size(), is_list ? 1u : 0u) << contents;
    EXPECT_EQ(report.empty(), is_list) << contents << report;
  }
}

}  // namespace
