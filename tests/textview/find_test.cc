#include "documents/WynDocument.h"
#include "platform/user_defaults.h"
#include "platform/without_threads.h"
#include "search/WynFindManager.h"
#include "search/patient_work.h"
#include "search/text_query.h"
#include "text/random_text.h"
#include "textview/isearch/WynISearchWindow.h"
#include "textview/shown_view.h"

// What batch mode can't see of finding: the panel, the pasteboard, the histories, searches that
// take long. What is found and replaced is tested in tests/batch.
namespace {

class find : public shown_view_test, public shown_view {
 protected:
  find() {
    manager.setOptions({});
    manager.setMainView([this] { return &view; });
  }
  ~find() override {
    manager.closeFindPanel();
    manager.setMainView({});
  }

  headless::scripted_find_panel& panel() { return desktop_.find(); }
  void type(std::string const& sought) {
    panel().fields.find = sought;
    panel().delegate->findPanelDidChange();
  }
  void push(platform::find_action action, std::uint32_t modifiers = 0, bool closes = false) {
    panel().delegate->findPanelAction(action, modifiers, closes);
  }
  static std::vector<std::string> strings(plist::array const& list) {
    std::vector<std::string> result;
    for (auto const& entry : list) result.push_back(entry.string_or(""));
    return result;
  }

  WynFindManager& manager = WynFindManager::sharedInstance();
};

TEST_F(find, panel_acts_on_the_view_and_says_what_came_of_it) {
  set("|one two one");
  manager.orderFrontFindPanel(false);
  type("one");
  EXPECT_EQ(view.shownMatches().size(), 2u);
  EXPECT_EQ(get() + panel().count, "[one] two one1 of 2");
  EXPECT_TRUE(manager.findHistory().empty());  // nothing is taken over yet

  struct step {
    platform::find_action action;
    std::uint32_t modifiers;
    char const *status, *count, *text;
    int beeps;
  };
  for (step const& s : {
           step{WynFindManager::find_next, 0, "", "2 of 2", "one two [one]", 0},
           step{WynFindManager::find_next, 0, "Not found", "2 of 2", "one two [one]", 1},
           step{WynFindManager::find_previous, 0, "", "1 of 2", "[one] two one", 1},
           step{WynFindManager::count, 0, "2 matches", "1 of 2", "[one] two one", 1},
           step{WynFindManager::count, platform::modifier::option, "1 match", "1 of 2",
                "[one] two one", 1},
           step{WynFindManager::replace_all, 0, "2 replaced", "No matches", "| two ", 1},
           step{WynFindManager::replace_all, 0, "Nothing replaced", "No matches", "| two ", 2},
           step{WynFindManager::count, 0, "Nothing found", "No matches", "| two ", 3},
       }) {
    push(s.action, s.modifiers);
    EXPECT_EQ(panel().status, s.status);
    EXPECT_EQ(panel().count, s.count);
    EXPECT_EQ(get(), s.text);
    EXPECT_EQ(desktop_.beeps, s.beeps);
  }
  EXPECT_TRUE(panel().visible);
  panel().fields.find = "two";
  push(WynFindManager::find_next, 0, true);
  EXPECT_FALSE(panel().visible);
  EXPECT_TRUE(view.shownMatches().empty());
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
    type(b.pattern);
    EXPECT_EQ(panel().status, std::string("regexp: ") + b.message);
    EXPECT_EQ(panel().error, b.offset) << b.pattern;
    push(WynFindManager::find_next);
    EXPECT_EQ(panel().status, std::string("regexp: ") + b.message);
  }
  type("x");
  EXPECT_EQ(panel().error, std::string::npos);
  panel().fields.replace = "(?1:a";
  push(WynFindManager::replace_all);
  EXPECT_EQ(panel().status, "Bad replacement string");
}

TEST_F(find, text_from_elsewhere_is_no_pattern) {
  manager.setOptions({{"findString", "a."}, {"regularExpression", true}});
  EXPECT_EQ(desktop_.find_pasteboard().get("text").string_or(""), "a.");
  desktop_.find_pasteboard().set({{"text", "a*"}});
  EXPECT_EQ(manager.findOptions().find, "a*");
  EXPECT_FALSE(manager.findOptions().regular_expression);
}

TEST_F(find, the_selection_may_be_what_to_put_in) {
  manager.orderFrontFindPanel(true);
  type("b");
  set("a[bc]d");
  perform("copySelectionToReplacePboard:");
  EXPECT_EQ(panel().fields.replace, "bc");
  EXPECT_EQ(panel().fields.find, "b");
  push(WynFindManager::replace_all);
  EXPECT_EQ(text(), "abccd");
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
  view.bind([&](std::string_view key, plist::value const& value) {
    if (key == "incrementalSearch") note = value.string_or("");
  });
  set("a|bc");
  manager.writeStringToFindPboard("x");
  perform("findNext:");
  EXPECT_EQ(note, "Not found: x");
  press(u"x");
  EXPECT_EQ(note, "");
  perform("findPrevious:");
  EXPECT_EQ(get() + note, "a[x]bc");
}

TEST_F(find, incremental_search_follows_what_is_typed) {
  set("abc |ABC abd abc");
  perform("ISIM_incrementalSearch:");
  press(u"abd");
  view.incrementalSearchWindow()->setIncrementalSearchString(u"Abc");
  EXPECT_EQ(desktop_.beeps, 1);  // a capital counts
  view.incrementalSearchWindow()->setIncrementalSearchString(u"abc");
  EXPECT_EQ(get(), "abc ABC abd [abc]");
  EXPECT_TRUE(view.findNextIncrementalSearchString(true));
  EXPECT_EQ(get(), "[abc] ABC abd abc");
  press(u"\x1B");
  EXPECT_EQ(view.incrementalSearchWindow(), nullptr);
}

TEST_F(find, incremental_search_composes_without_a_change_of_text) {
  set("|abc \u304b");
  auto const memento = view.view()->storage->current_memento;
  perform("ISIM_incrementalSearch:");
  press(u"ab");
  for (char16_t const* const composed : {u"k", u"ka", u"\u304b"}) {
    view.set_marked_text(composed, 1, 0);
    EXPECT_EQ(get(), "[ab]c \u304b");
  }
  view.insert_text(u"c");
  EXPECT_EQ(get(), "[abc] \u304b");
  view.set_marked_text(u"x", 1, 0);
  view.set_marked_text(u"", 0, 0);
  EXPECT_EQ(get(), "[abc] \u304b");
  EXPECT_EQ(view.view()->storage->current_memento, memento);
}

TEST_F(find, a_search_that_takes_long_can_be_cancelled) {
  std::string const text = "|" + std::string(200000, 'a');
  set(text);
  desktop_.busy().cancel_after = 60;
  int looks = 0;
  desktop_.busy().while_busy = [&] { ++looks; };
  plist::value answer = view.findWithOptions(
      {{"findString", "a+(?=\\d)"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(answer["statusText"].string_or(""), "Cancelled");
  EXPECT_EQ(desktop_.busy().shown, "Searching\u2026");
  EXPECT_EQ(looks, 61);
  EXPECT_EQ(get(), text);
  // The next search need not wait for that one.
  answer = view.findWithOptions({{"findString", "a"}, {"action", "findNext"}});
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
  desktop_.busy().cancel_after = 3;
  for (int i = 0; i < 6; ++i) {
    auto const answer = view.findWithOptions(
        {{"findString", endless}, {"action", "findNext"}, {"regularExpression", true}});
    EXPECT_EQ(answer["statusText"].string_or(""), "Cancelled");
    EXPECT_LE(count(), before + 4);
  }
  view.findWithOptions({{"findString", "a"}, {"action", "findNext"}});
  EXPECT_EQ(get(), "[a]" + std::string(9999, 'a'));
  // A pattern waits for one of those to end.
  desktop_.busy().cancel_after = 10000;
  view.findWithOptions({{"findString", "a+"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(get(), "a[" + std::string(9999, 'a') + "]");
}

TEST_F(find, works_when_no_thread_can_be_started) {
  set("|ab ab");
  desktop_.busy().cancel_after = 10000;
  without_threads const none;
  view.findWithOptions({{"findString", "b+"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(get(), "a[b] ab");
}

TEST_F(find, giving_up_is_told_apart_from_not_finding) {
  set("|" + std::string(40, 'a'));
  plist::value const answer = view.findWithOptions(
      {{"findString", "^(a|a|aa)+$\\1b"}, {"action", "findNext"}, {"regularExpression", true}});
  EXPECT_EQ(answer["statusText"].string_or(""), "Search stopped: the pattern takes too long");
}

TEST_F(find, what_is_found_is_what_a_plain_search_finds) {
  std::atomic<bool> const never = false;
  for (unsigned seed = 1; seed <= 400; ++seed) {
    random_source random(seed);
    std::u16string const text = random.text(random.up_to(200), u"ab\n");
    std::u16string const sought = random.text(1 + random.up_to(3), u"ab\n");
    std::size_t const from = random.up_to(text.size());
    for (bool const pattern : {false, true}) {
      search::text_query const query(sought, {.regular_expression = pattern});
      search::text_searcher searcher(query, text, never);
      bool const next = searcher.next(from, text.size()) == search::search_end::found;
      EXPECT_EQ(next ? searcher.begin() : text.npos, text.find(sought, from)) << seed;
      std::size_t const before =
          pattern ? (from == 0 ? text.npos : text.rfind(sought, from - 1))
                  : (from < sought.size() ? text.npos : text.rfind(sought, from - sought.size()));
      bool const previous = searcher.previous(0, from) == search::search_end::found;
      EXPECT_EQ(previous ? searcher.begin() : text.npos, before) << seed;
    }
  }
}

}  // namespace
