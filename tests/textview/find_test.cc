#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "platform/user_defaults.h"
#include "platform/without_threads.h"
#include "text/marked_text.h"
#include "text/random_text.h"
#include "textview/WynFindManager.h"
#include "textview/WynISearchWindow.h"
#include "textview/WynTextView.h"
#include "textview/patient_work.h"
#include "textview/text_query.h"
#include "textview/view_will_change.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

// What batch mode can't see of finding: the panel, the pasteboard, the histories, searches that
// take long. What is found and replaced is tested in tests/batch.
namespace {

class find : public testing::Test {
 protected:
  find()
      : former_(
            platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""))) {
    manager.setOptions({});
    view_ = std::make_unique<WynTextView>();
    host_ = std::make_unique<headless::headless_view_host>(*view_);
    view_->setDocument(WynDocument::document());
    manager.setMainView([this] { return view_.get(); });
  }
  ~find() override {
    manager.closeFindPanel();
    manager.setMainView({});
    host_.reset();
    view_.reset();
    platform::user_defaults::set_standard(std::move(former_));
  }

  void set(std::string_view drawing) {
    view_will_change const scope(*view_);
    marked_text::set(*view_->view(), drawing);
  }
  std::string get() const { return marked_text::get(*view_->view()); }
  headless::scripted_find_panel& panel() { return desktop.find(); }
  void press(WynFindManager::tag tag, std::uint32_t modifiers = 0, bool closes = false) {
    panel().delegate->findPanelAction(tag, modifiers, closes);
  }
  void type(std::u16string const& keys) {
    for (char16_t const key : keys) {
      platform::key_event event;
      event.characters = event.characters_ignoring_modifiers = std::u16string(1, key);
      view_->key_down(event);
    }
  }
  static std::vector<std::string> strings(plist::array const& list) {
    std::vector<std::string> result;
    for (auto const& entry : list) result.push_back(entry.string_or(""));
    return result;
  }

  headless::headless_desktop desktop;
  std::unique_ptr<platform::user_defaults> former_;
  WynFindManager& manager = WynFindManager::sharedInstance();
  std::unique_ptr<WynTextView> view_;
  std::unique_ptr<headless::headless_view_host> host_;
};

TEST_F(find, panel_acts_on_the_view_and_says_what_came_of_it) {
  set("|one two one");
  manager.orderFrontFindPanel(false);
  panel().fields.find = "one";
  panel().delegate->findPanelDidChange();
  EXPECT_EQ(view_->shownMatches().size(), 2u);
  EXPECT_TRUE(manager.findHistory().empty());  // nothing is taken over yet

  struct step {
    WynFindManager::tag tag;
    std::uint32_t modifiers;
    char const *status, *text;
    int beeps;
  };
  for (step const& s : {
           step{WynFindManager::find_next, 0, "", "[one] two one", 0},
           step{WynFindManager::find_next, 0, "", "one two [one]", 0},
           step{WynFindManager::find_next, 0, "Not found", "one two [one]", 1},
           step{WynFindManager::count, 0, "2 matches", "one two [one]", 1},
           step{WynFindManager::count, platform::modifier::option, "1 matches", "one two [one]", 1},
           step{WynFindManager::replace_all, 0, "2 replaced", "| two ", 1},
           step{WynFindManager::replace_all, 0, "Nothing replaced", "| two ", 2},
           step{WynFindManager::count, 0, "Nothing found", "| two ", 3},
       }) {
    press(s.tag, s.modifiers);
    EXPECT_EQ(panel().status, s.status);
    EXPECT_EQ(get(), s.text);
    EXPECT_EQ(desktop.beeps, s.beeps);
  }
  EXPECT_TRUE(panel().visible);
  panel().fields.find = "two";
  press(WynFindManager::find_next, 0, true);
  EXPECT_FALSE(panel().visible);
  EXPECT_TRUE(view_->shownMatches().empty());
  EXPECT_EQ(strings(manager.findHistory()), (std::vector<std::string>{"two", "one"}));
}

TEST_F(find, bad_patterns_are_marked_where_they_go_wrong) {
  manager.orderFrontFindPanel(false);
  panel().fields.regular_expression = true;
  struct bad {
    char const *pattern, *message;
    std::size_t offset;
  };
  for (bad const& b : {bad{"(a)(b", "end pattern with unmatched parenthesis", 3},
                       bad{"i(f[a-z]+", "end pattern with unmatched parenthesis", 1},
                       bad{"x[ab", "premature end of char-class", 1},
                       bad{"ab)c", "unmatched close parenthesis", 2},
                       bad{"\u00e4)", "unmatched close parenthesis", 1},
                       bad{"*a", "target of repeat operator is not specified", 0}}) {
    panel().fields.find = b.pattern;
    panel().delegate->findPanelDidChange();
    EXPECT_EQ(panel().status, std::string("regexp: ") + b.message);
    EXPECT_EQ(panel().error, b.offset) << b.pattern;
    press(WynFindManager::find_next);
    EXPECT_EQ(panel().status, std::string("regexp: ") + b.message);
  }
  panel().fields.find = "x";
  panel().delegate->findPanelDidChange();
  EXPECT_EQ(panel().error, std::string::npos);
  panel().fields.replace = "(?1:a";
  press(WynFindManager::replace_all);
  EXPECT_EQ(panel().status, "Bad replacement string");
}

TEST_F(find, text_from_elsewhere_is_no_pattern) {
  manager.setOptions({{"findString", "a."}, {"regularExpression", true}});
  EXPECT_EQ(desktop.find_pasteboard().get("text").string_or(""), "a.");
  desktop.find_pasteboard().set({{"text", "a*"}});
  EXPECT_EQ(manager.findOptions().find, "a*");
  EXPECT_FALSE(manager.findOptions().regular_expression);
}

TEST_F(find, histories_keep_ten_entries_with_the_latest_first) {
  for (char c = 'a'; c <= 'm'; ++c) manager.setOptions({{"findString", std::string(1, c)}});
  manager.setOptions({{"findString", "e"}, {"replaceString", "r"}});
  EXPECT_EQ(strings(manager.findHistory()),
            (std::vector<std::string>{"e", "m", "l", "k", "j", "i", "h", "g", "f", "d"}));
  EXPECT_EQ(strings(manager.replaceHistory()), std::vector<std::string>{"r"});
  EXPECT_EQ(
      platform::user_defaults::standard().dictionary("WynFindPanelOptions").count("findString"),
      0u);
}

TEST_F(find, the_status_bar_says_what_was_not_found_until_the_next_key) {
  std::string note;
  view_->bind([&](std::string_view key, plist::value const& value) {
    if (key == "incrementalSearch") note = value.string_or("");
  });
  set("a|bc");
  manager.writeStringToFindPboard("x");
  view_->performSelectorWithObject("findNext:", {});
  EXPECT_EQ(note, "Not found: x");
  type(u"x");
  EXPECT_EQ(note, "");
  view_->performSelectorWithObject("findPrevious:", {});
  EXPECT_EQ(get() + note, "a[x]bc");
}

TEST_F(find, incremental_search_follows_what_is_typed) {
  set("abc |ABC abd abc");
  view_->performSelectorWithObject("ISIM_incrementalSearch:", {});
  type(u"ab");
  EXPECT_EQ(get(), "abc [AB]C abd abc");
  type(u"d");
  EXPECT_EQ(get(), "abc ABC [abd] abc");
  type(u"\x7F");
  EXPECT_EQ(get(), "abc ABC [ab]d abc");
  view_->incrementalSearchWindow()->setIncrementalSearchString(u"Abc");
  EXPECT_EQ(desktop.beeps, 1);  // a capital counts
  view_->incrementalSearchWindow()->setIncrementalSearchString(u"abc");
  EXPECT_EQ(get(), "abc ABC abd [abc]");
  EXPECT_TRUE(view_->findNextIncrementalSearchString(true));
  EXPECT_EQ(get(), "[abc] ABC abd abc");
  type(u"\x1B");
  EXPECT_EQ(view_->incrementalSearchWindow(), nullptr);

  set("abc ABC abd| abc");
  view_->performSelectorWithObject("ISIM_reverseIncrementalSearch:", {});
  type(u"ab");
  EXPECT_EQ(get(), "abc ABC [ab]d abc");
  type(u"c");
  EXPECT_EQ(get(), "abc [ABC] abd abc");
}

TEST_F(find, a_search_that_takes_long_can_be_cancelled) {
  std::string const text = "|" + std::string(200000, 'a');
  set(text);
  desktop.busy().cancel_after = 60;
  auto const started = std::chrono::steady_clock::now();
  plist::value answer = view_->findWithOptions(
      {{"findString", "a+(?=\\d)"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(answer["statusText"].string_or(""), "Cancelled");
  EXPECT_EQ(desktop.busy().shown, "Searching\u2026");
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(2));
  EXPECT_EQ(get(), text);
  // The next search need not wait for that one.
  answer = view_->findWithOptions({{"findString", "a"}, {"action", "findNext"}});
  EXPECT_EQ(answer["statusText"].string_or(""), "");
}

// Each step of the outer repetition looks to the end of the text, without a limit being spent.
constexpr char const* endless = "(?:(?=.*)a)+b";

TEST_F(find, searches_that_cannot_be_stopped_do_not_pile_up) {
  set("|" + std::string(10000, 'a'));
  std::filesystem::path const threads = "/proc/self/task";
  auto const count = [&] {
    return std::distance(std::filesystem::directory_iterator(threads),
                         std::filesystem::directory_iterator());
  };
  auto const before = count();
  desktop.busy().cancel_after = 3;
  for (int i = 0; i < 6; ++i) {
    auto const answer = view_->findWithOptions(
        {{"findString", endless}, {"action", "findNext"}, {"regularExpression", true}});
    EXPECT_EQ(answer["statusText"].string_or(""), "Cancelled");
    EXPECT_LE(count(), before + 4);
  }
  view_->findWithOptions({{"findString", "a"}, {"action", "findNext"}});
  EXPECT_EQ(get(), "[a]" + std::string(9999, 'a'));
  // A pattern waits for one of those to end.
  desktop.busy().cancel_after = 10000;
  view_->findWithOptions(
      {{"findString", "a+"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(get(), "a[" + std::string(9999, 'a') + "]");
}

TEST_F(find, works_when_no_thread_can_be_started) {
  set("|ab ab");
  desktop.busy().cancel_after = 10000;
  without_threads const none;
  view_->findWithOptions(
      {{"findString", "b+"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(get(), "a[b] ab");
}

TEST_F(find, giving_up_is_told_apart_from_not_finding) {
  set("|" + std::string(40, 'a'));
  plist::value const answer = view_->findWithOptions(
      {{"findString", "^(a|a|aa)+$\\1b"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(answer["statusText"].string_or(""), "Gave up: the pattern takes too long");
}

TEST_F(find, what_is_found_is_what_a_plain_search_finds) {
  std::atomic<bool> const never = false;
  for (unsigned seed = 1; seed <= 400; ++seed) {
    random_source random(seed);
    std::u16string const text = random.text(random.up_to(200), u"ab\n");
    std::u16string const sought = random.text(1 + random.up_to(3), u"ab\n");
    std::size_t const from = random.up_to(text.size());
    for (bool const pattern : {false, true}) {
      text_query const query(sought, pattern, false);
      text_searcher searcher(query, text, never);
      bool const next = searcher.next(from, text.size()) == search_end::found;
      EXPECT_EQ(next ? searcher.begin() : text.npos, text.find(sought, from)) << seed;
      std::size_t const before =
          pattern ? (from == 0 ? text.npos : text.rfind(sought, from - 1))
                  : (from < sought.size() ? text.npos : text.rfind(sought, from - sought.size()));
      bool const previous = searcher.previous(0, from) == search_end::found;
      EXPECT_EQ(previous ? searcher.begin() : text.npos, before) << seed;
    }
  }
}

}  // namespace
