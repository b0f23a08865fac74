#include <thread>

#include "app_fixture.h"
#include "platform/utf.h"
#include "windows/find_in_project.h"

// Finding and replacing in a folder, with texts that are open and changed.
namespace {

using action = platform::project_find_action;

class find_in_project : public app_test {
 protected:
  find_in_project() {
    std::filesystem::create_directories(folder / "tree/sub");
    folder.write("tree/a.txt", "one two\nthree one\n");
    folder.write("tree/b.txt", "none\n");
    folder.write("tree/sub/c.txt", "\tone\n");
    folder.write("tree/d.bin", std::string("one\0", 4));
    window_ = app().openFile(folder / "tree/a.txt");
    window_->textView().tryToPerformWith("orderFrontFindInProjectPanel:", {});
    panel().fields = {};  // without what other tests have left
    panel().fields.where = 1;
  }
  headless::scripted_project_find& panel() { return desktop.project_find(); }
  void run(action what) {
    panel().delegate->projectFindAction(what);
    wait();
  }
  void wait() {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (panel().shown.is_running && std::chrono::steady_clock::now() < end) {
      desktop.loop().run_for(0.05);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_FALSE(panel().shown.is_running);
  }
  void find(std::string const& sought) {
    panel().fields.find = sought;
    run(action::begin);
  }
  /// Files and their matches; what is bold in brackets, then what would replace it.
  strings rows() {
    strings result;
    auto& results = *panel().delegate;
    for (std::size_t file = 0; file < results.projectFindFiles(); ++file) {
      std::string title = results.projectFindRow({.file = file, .match = {}}).text;
      if (auto const dash = title.find(" \u2014 "); dash != title.npos) {
        auto const colon = title.find(": ", dash);
        title.erase(dash, std::min(colon, title.size()) - dash);
      }
      result.push_back(title);
      for (std::size_t n = 0; n < results.projectFindMatches(file); ++n) {
        auto const row = results.projectFindRow({.file = file, .match = n});
        std::u16string text = unicode::to_utf16(row.text);
        text.insert(row.last, u"]" + unicode::to_utf16(row.replacement.value_or("")));
        text.insert(row.first, u"[");
        result.push_back(unicode::to_utf8(text));
      }
    }
    return result;
  }

  windows::document_window* window_ = nullptr;
};

TEST_F(find_in_project, shows_what_stands_in_open_texts_and_files) {
  type(*window_, u"one ");
  find("one");
  EXPECT_EQ(rows(), strings({"a.txt", "\u2007\u2007\u2007\u20071:[one] one two",
                             "\u2007\u2007\u2007\u20071:one [one] two",
                             "\u2007\u2007\u2007\u20072:three [one]", "b.txt",
                             "\u2007\u2007\u2007\u20071:n[one]", "c.txt",
                             "\u2007\u2007\u2007\u20071:\t[one]"}));
  EXPECT_EQ(panel().status, "5 matches in 3 of 3 files, 1 binary file left out");
  panel().fields.whole_words = true;
  panel().fields.replace = "<$0>";
  panel().fields.regular_expression = true;
  panel().fields.included = "*.md c.*";
  find("o(n)e");
  EXPECT_EQ(rows(), strings({"c.txt", "\u2007\u2007\u2007\u20071:\t[one]<one>"}));
  panel().fields.find = "o(";
  panel().delegate->projectFindDidChange();
  EXPECT_EQ(panel().error, 1u);
}

TEST_F(find_in_project, walks_through_the_matches_with_the_keys_for_results) {
  find("one");
  auto const selected = [&] {
    auto const front = app().orderedControllers().front();
    auto const& at = front->textView().view()->selection;
    return front->textDocument()->displayName() + " " + std::to_string(at.first().base.line) + ":" +
           std::to_string(at.first().base.column);
  };
  strings seen;
  auto const step = [&](char const* selector) {
    perform(*app().orderedControllers().front(), selector);
    return selected();
  };
  for (std::string at; seen.size() < 9; seen.push_back(at))
    if ((at = step("selectNextResult:")) == (seen.empty() ? "" : seen.back())) break;
  EXPECT_EQ(seen, strings({"a.txt 0:0", "a.txt 1:6", "b.txt 0:1", "c.txt 0:1"}));
  EXPECT_EQ(step("selectPreviousResult:"), "b.txt 0:1");
  EXPECT_EQ(panel().selected->file, 1u);
}

TEST_F(find_in_project, replaces_what_is_ticked_and_puts_it_back) {
  panel().fields.replace = "1";
  find("one");
  ASSERT_TRUE(panel().shown.can_replace);
  panel().delegate->projectFindTick({.file = 0, .match = 1}, false);
  panel().delegate->projectFindTick({.file = 1, .match = {}}, false);
  using ticks = platform::project_find_delegate::ticks;
  EXPECT_EQ(panel().delegate->projectFindTicks({.file = 0, .match = {}}), ticks::some);
  run(action::replace_ticked);  // declined
  EXPECT_EQ(alerts(), strings({"Replace 2 matches?|Cancel"}));
  answer("Replace 2 matches?", "Replace");
  run(action::replace_ticked);
  EXPECT_EQ(rows(), strings({"a.txt: 1 replaced, not saved", "c.txt: 1 replaced"}));
  EXPECT_EQ(panel().status, "2 replaced in 2 files");
  EXPECT_EQ(window_->textDocument()->storage().whole_text(), u"1 two\nthree one\n");
  EXPECT_EQ(windows(), titles({"*a.txt"}));
  EXPECT_EQ(content_of_file(folder / "tree/sub/c.txt"), "\t1\n");
  EXPECT_FALSE(panel().shown.can_replace);
  run(action::undo_replace);
  EXPECT_EQ(panel().status, "2 put back in 2 files");
  EXPECT_EQ(content_of_file(folder / "tree/sub/c.txt"), "\tone\n");
  EXPECT_EQ(windows(), titles({"a.txt"}));
}

TEST_F(find_in_project, writes_back_what_was_edited_in_a_document_of_results) {
  find("one");
  run(action::open_as_document);
  auto const document = app().orderedControllers().front()->textDocument();
  std::string const text = unicode::to_utf8(document->storage().whole_text());
  std::string const at = text.substr(0, text.find("a.txt:1: "));
  EXPECT_EQ(text, at + "a.txt:1: one two\n" + at + "a.txt:2: three one\n" + at + "b.txt:1: none\n" +
                      at + "sub/c.txt:1: \tone\n");
  auto const edited = unicode::to_utf16(at + "a.txt:2: 3 1\nwhat\n" + at + "b.txt:1: none\n" + at +
                                        "sub/c.txt:1: more: c.txt:2: \u00e9\n");
  document->storage().clear();
  document->storage().insert(document->storage().begin_of_line(0), edited.begin(), edited.end());
  answer("Write 2 lines back?", "Replace");
  EXPECT_TRUE(perform(*app().orderedControllers().front(), "writeBackResults:"));
  wait();
  EXPECT_EQ(window_->textDocument()->storage().whole_text(), u"one two\n3 1\n");
  EXPECT_EQ(content_of_file(folder / "tree/sub/c.txt"), "more: c.txt:2: \u00e9\n");
  EXPECT_EQ(content_of_file(folder / "tree/b.txt"), "none\n");
  platform::menu_item item;
  item.selector = "writeBackResults:";
  app().validateMenuItem(item);
  EXPECT_FALSE(item.enabled);
}

}  // namespace
