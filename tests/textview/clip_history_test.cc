#include "actions/WynPasteboardManager.h"
#include "textview/shown_view.h"

namespace {

class pasting_from_history : public shown_view_test, protected shown_view {
 protected:
  pasting_from_history() { WynPasteboardManager::sharedInstance().clear(); }

  void copy(std::string_view drawing) {
    set(drawing);
    perform("copy:");
  }
};

TEST_F(pasting_from_history, shows_a_list_to_choose_from) {
  EXPECT_FALSE(validated("pastePrevious:").enabled);
  copy("[\n\t first line, \xf0\x9f\x98\x80\tend\nsecond\n]");
  copy("{ab\ncd}");
  copy("[" + std::string(3999, 'x') + "\xf0\x9f\x98\x80]");
  copy("[ \n]");
  auto& panel = desktop_.clips();
  set("a|b");
  perform("orderFrontPasteboardPanel:");
  EXPECT_EQ(text(), "ab");
  std::vector<std::string> rows;
  for (auto const& clip : panel.last_clips) rows.push_back(clip.remark + "|" + clip.title);
  EXPECT_EQ(rows, (std::vector<std::string>{"|(blanks)", "|" + std::string(120, 'x'),
                                            "rectangle, 2 lines|ab",
                                            "3 lines|first line, \xf0\x9f\x98\x80 end"}));
  EXPECT_EQ(panel.last_clips[1].preview, std::string(3999, 'x'));

  // Without an answer the one gone to last is on the clipboard.
  panel.visited = {1, 2};
  perform("orderFrontPasteboardPanel:");
  EXPECT_EQ(text(), "ab");
  EXPECT_EQ(desktop_.general_pasteboard().get("text").string_or(""), "ab\ncd\n");
  perform("orderFrontPasteboardPanel:");
  EXPECT_EQ(panel.last_selected, 2u);

  // While it is open another program copies something.
  panel.answers = {2, 1, 99};
  panel.while_open = [&] {
    desktop_.general_pasteboard().set({{"text", "new"}});
    WynPasteboardManager::sharedInstance().checkClipboard();
  };
  perform("orderFrontPasteboardPanel:");
  EXPECT_EQ(text(), "aabb\n cd");
  EXPECT_EQ(WynPasteboardManager::sharedInstance().pasteIndex(), 3u);
  panel.visited = {2, 0};
  panel.while_open = [] { WynPasteboardManager::sharedInstance().clear(); };
  perform("orderFrontPasteboardPanel:");
  EXPECT_EQ(text(), "aabb\n cd");
}

}  // namespace
