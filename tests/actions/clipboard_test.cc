#include "actions/clipboard.h"

#include "actions/action_fixture.h"
#include "headless/headless_desktop.h"
#include "test.h"
#include "text/marked_text.h"

using namespace actions;

namespace {

class clipboard : public testing::Test {
 protected:
  void put(plist::dictionary types) { desktop_.general_pasteboard().set(std::move(types)); }

  headless::headless_desktop desktop_;
  action_fixture fixture_;
};

}  // namespace

TEST_F(clipboard, round_trips) {
  EXPECT_EQ(fixture_.run("a[b\nc]d", "copy moveRight paste"), "ab\ncb\nc|d");
  EXPECT_EQ(fixture_.run("a[bc]d", "cut moveRight paste"), "adbc|");
  EXPECT_EQ(fixture_.run("{ab\ncd\ne·}f\n", "copy"), "{ab\ncd\ne·}f\n");
  EXPECT_EQ(fixture_.run("x|y\n", "paste"), "xab|y\n cd\n ef");
  EXPECT_EQ(fixture_.run("a|b", "copy"), "!a|b");
  EXPECT_EQ(current_clip()->text, u"ab\ncd\nef\n");
}

TEST_F(clipboard, texts_of_other_programs) {
  EXPECT_EQ(fixture_.run("a|b", "paste pasteWithoutReindent"), "!!a|b");
  put({{"text", "1\r\n2\r3\n\r"}});
  EXPECT_EQ(fixture_.run("a[b]c", "paste"), "a1\n2\n3\n\n|c");
  put({{"files", plist::array{"/tmp/x"}}});
  EXPECT_EQ(fixture_.run("a|b", "paste"), "!a|b");
  put({{"text", "t"}, {"WynQuirnotePboardType", plist::dictionary{{"Rectangular", "YES"}}}});
  EXPECT_EQ(fixture_.run("a|b", "paste"), "at|b");
  put({{"text", std::string("a\0b", 3)}});
  fixture_.run("|", "paste");
  EXPECT_EQ(fixture_.storage.size(0), 3U);
}

TEST_F(clipboard, lone_surrogates_survive) {
  fixture_.storage.insert(fixture_.storage.end(-1), 1, char16_t{0xD800});
  EXPECT_TRUE(fixture_.actions.perform_action("selectAll:", &fixture_.view));
  EXPECT_TRUE(view_copy(&fixture_.view));
  EXPECT_EQ(current_clip()->text, std::u16string(1, char16_t{0xD800}));
}

TEST_F(clipboard, yanking_is_not_mixed_up_with_what_the_selection_loses) {
  fixture_.run("|foo bar", "deleteWordRight");
  fixture_.view.selection.select(fixture_.view.begin(0), fixture_.view.end(), false);
  EXPECT_TRUE(fixture_.actions.perform_action("yank:", &fixture_.view));
  EXPECT_EQ(marked_text::get(fixture_.view), "foo|");
}
