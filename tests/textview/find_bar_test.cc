#include "platform/entry_walk.h"
#include "platform/without_threads.h"
#include "search/WynFindManager.h"
#include "search/match_survey.h"
#include "text/random_text.h"
#include "textview/shown_view.h"

#include <thread>

// What the find bar shows and does while one types into it; what its buttons do is in find_test.cc.
namespace {

class find_bar : public shown_view_test, public shown_view {
 protected:
  find_bar() {
    manager.setOptions({});
    manager.setMainView([this] { return &view; });
  }
  ~find_bar() override {
    manager.closeFindPanel();
    manager.setMainView({});
  }

  platform::find_panel_values& fields() { return desktop_.find().fields; }
  std::string const& count() { return desktop_.find().count; }
  void changed() { desktop_.find().delegate->findPanelDidChange(); }
  void type(std::string const& sought) {
    fields().find = sought;
    changed();
  }
  void push(platform::find_action action) {
    desktop_.find().delegate->findPanelAction(action, 0, false);
  }
  // On another thread, as in a window.
  void use_threads() { desktop_.busy().cancel_after = 100000; }
  bool comes(std::string const& shown, std::string const& expected) {
    for (int i = 0; i < 5000 && shown != expected; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      desktop_.loop().run_for(0.01);
    }
    return shown == expected;
  }

  WynFindManager& manager = WynFindManager::sharedInstance();
};

TEST_F(find_bar, takes_a_selection_in_one_line) {
  struct row {
    char const *text, *sought, *taken;
    bool is_pattern;
  };
  for (row const& r : {row{"a [b.c] d", "x", "b.c", false}, row{"a [b.c] d", "x", "b\\.c", true},
                       row{"a [b.c] d", "b.+c", "b.+c", true}, row{"a |b", "x", "x", false},
                       row{"a [b\nc] d", "x", "x", false}, row{"[a]", "", "a", false}}) {
    set(r.text);
    manager.setOptions({{"findString", r.sought}, {"regularExpression", r.is_pattern}});
    manager.orderFrontFindPanel(false);
    EXPECT_EQ(fields().find, r.taken) << r.text;
    EXPECT_EQ(get(), r.text);
    manager.closeFindPanel();
    EXPECT_EQ(manager.findOptions().find, r.taken);
  }
}

TEST_F(find_bar, selects_what_is_typed_from_where_one_began) {
  set("al|so alto altar alto");
  manager.orderFrontFindPanel(false);
  struct row {
    char const *sought, *text, *count;
  };
  for (row const& r : {row{"a", "also [a]lto altar alto", "2 of 5"},
                       row{"alta", "also alto [alta]r alto", "1 of 1"},
                       row{"alt", "also [alt]o altar alto", "1 of 3"},
                       row{"alx", "also [alt]o altar alto", "No matches"},
                       row{"also", "[also] alto altar alto", "1 of 1"}}) {
    type(r.sought);
    EXPECT_EQ(get(), r.text);
    EXPECT_EQ(count(), r.count) << r.sought;
  }
  // Escape keeps the caret there, and so it is what the next word is sought from.
  manager.closeFindPanel();
  EXPECT_EQ(get(), "[also] alto altar alto");
  EXPECT_EQ(manager.findPboardString(), "also");
}

TEST_F(find_bar, a_macro_has_only_what_was_asked_for) {
  set("|ab ab");
  perform("toggleMacroRecording:");
  manager.orderFrontFindPanel(false);
  type("ab");
  EXPECT_EQ(get(), "|ab ab");
  push(WynFindManager::find_next);
  EXPECT_EQ(get(), "[ab] ab");
}

TEST_F(find_bar, whole_words_end_where_letters_do) {
  struct row {
    char const *text, *sought;
    std::size_t count;
    bool is_pattern;
  };
  for (row const& r : {row{"|in inn _in in_ in2 (in) in", "in", 3, false},
                       row{"|in inn", "i.", 1, true}, row{"|f(x) xf(x)", "f(", 1, false},
                       row{"|\u00e9a a \U00020000a", "a", 1, false}, row{"|aaa aa", "aa", 1, false},
                       row{"|in-in", "in", 2, false}, row{"|inn", "in", 0, false}}) {
    set(r.text);
    manager.setOptions({{"wholeWords", true}, {"regularExpression", r.is_pattern}});
    manager.orderFrontFindPanel(false);
    type(r.sought);
    EXPECT_EQ(count(), r.count == 0 ? "No matches" : "1 of " + std::to_string(r.count)) << r.text;
    EXPECT_EQ(view.shownMatches().size(), r.count) << r.text;
    push(WynFindManager::count);
    EXPECT_EQ(desktop_.find().status, r.count == 0   ? "Nothing found"
                                      : r.count == 1 ? "1 match"
                                                     : std::to_string(r.count) + " matches");
    manager.closeFindPanel();
  }
}

TEST_F(find_bar, searches_the_selection_alone_while_the_text_changes) {
  set("ab [ab\nab] ab");
  manager.setOptions({{"wrapAround", true}});
  manager.orderFrontFindPanel(false);
  fields().in_selection = true;
  type("ab");
  EXPECT_EQ(get() + count(), "ab [ab]\nab ab1 of 2");
  for (char const* const next : {"ab ab\n[ab] ab", "ab [ab]\nab ab"}) {
    push(WynFindManager::find_next);
    EXPECT_EQ(get(), next);
  }
  push(WynFindManager::find_previous);
  EXPECT_EQ(get(), "ab ab\n[ab] ab");
  fields().replace = "abab";
  push(WynFindManager::replace);
  EXPECT_EQ(text(), "ab ab\nabab ab");
  EXPECT_EQ(count(), "3 matches");
  push(WynFindManager::replace_all);
  EXPECT_EQ(get(), "ab [abab\nabababab] ab");
  perform("undo:");
  EXPECT_EQ(text() + count(), "ab ab\nabab ab3 matches");
  fields().in_selection = false;
  changed();
  EXPECT_EQ(count().substr(count().size() - 1), "5");
}

// What is typed is selected, but who ticks the box afterwards means what had been selected.
TEST_F(find_bar, a_selection_lasts_while_one_types) {
  auto const begin = [this](char const* text) {
    manager.closeFindPanel();
    set(text);
    manager.orderFrontFindPanel(true);
    fields().replace = "x";
    for (char const* const typed : {"a", "ab"}) type(typed);
  };
  begin("ab [ab\nab] ab");
  fields().in_selection = true;
  changed();
  EXPECT_EQ(get() + count(), "ab [ab]\nab ab1 of 2");
  EXPECT_EQ(view.shownMatches().size(), 2u);

  begin("ab [ab\nab] ab");
  desktop_.find().delegate->findPanelAction(WynFindManager::replace_all,
                                            platform::modifier::command, false);
  EXPECT_EQ(text(), "ab x\nx ab");
  begin("ab [ab\nab] ab");
  perform("replaceAllInSelection:");
  EXPECT_EQ(text(), "ab x\nx ab");

  begin("|ab ab");
  fields().in_selection = true;
  changed();
  EXPECT_EQ(get() + count() + desktop_.find().status,
            "[ab] ab1 of 2Nothing is selected to search in");
  EXPECT_FALSE(fields().in_selection);
}

TEST_F(find_bar, a_selection_to_search_in_must_be_there_and_ends_with_the_bar) {
  set("a|b ab");
  manager.orderFrontFindPanel(false);
  fields().in_selection = true;
  type("ab");
  EXPECT_FALSE(fields().in_selection);
  EXPECT_EQ(desktop_.beeps, 1);
  set("[ab] ab");
  fields().in_selection = true;
  changed();
  EXPECT_EQ(count(), "1 of 1");
  manager.closeFindPanel();
  manager.orderFrontFindPanel(false);
  EXPECT_FALSE(fields().in_selection);
  EXPECT_EQ(count(), "1 of 2");
  fields().in_selection = true;
  changed();
  view.setDocument(WynDocument::document());
  EXPECT_FALSE(fields().in_selection);
  EXPECT_EQ(count(), "");
}

TEST_F(find_bar, replaces_only_what_is_a_match) {
  set("xx|ab ab");
  manager.orderFrontFindPanel(true);
  fields().find = "ab";
  fields().replace = "c";
  push(WynFindManager::replace);
  EXPECT_EQ(get(), "xx[ab] ab");
  push(WynFindManager::replace_and_find);
  EXPECT_EQ(get(), "xxc [ab]");
}

TEST_F(find_bar, shows_what_a_pattern_is_replaced_by) {
  set("|f(1, 22)");
  manager.setOptions({{"regularExpression", true}});
  manager.orderFrontFindPanel(true);
  type("f");
  std::string const& preview = desktop_.find().preview;
  struct row {
    char const *sought, *replacement, *preview;
  };
  for (row const& r : {row{"(\\d), (\\d+)", "$2, $1", "\u2192 22, 1"},
                       row{"(\\d), (\\d+)", "\\U$0x", "\u2192 1, 22X"},
                       row{"(\\d), (\\d+)", "(?1:a", "Bad replacement string"},
                       row{"nothing", "$0", ""}, row{"(", "$0", ""}}) {
    fields().replace = r.replacement;
    type(r.sought);
    EXPECT_EQ(preview, r.preview) << r.replacement;
  }
}

TEST_F(find_bar, what_was_sought_comes_back) {
  manager.setOptions({{"findString", "before"}, {"regularExpression", true}});
  manager.setOptions({{"findString", ""}, {"regularExpression", true}});
  manager.restoreFindString();
  EXPECT_EQ(manager.findPboardString(), "before");
  EXPECT_TRUE(manager.findOptions().regular_expression);
  manager.setOptions({{"findString", "now"}});
  manager.restoreFindString();
  EXPECT_EQ(manager.findOptions().find, "now");
}

TEST_F(find_bar, counts_on_another_thread_while_the_text_changes) {
  std::string text;
  for (int i = 0; i < 100000; ++i) text += "needle in a line\n";
  set("|" + text);
  press(u"x");  // from now on the text doesn't stand in one piece
  use_threads();
  manager.orderFrontFindPanel(false);
  type("needle");
  EXPECT_TRUE(comes(count(), "1 of 100,000"));
  EXPECT_EQ(view.scroll_ticks(300).size(), 300u);
  press(u"n");
  EXPECT_TRUE(comes(count(), "99,999 matches")) << count();
  // What is typed while matches are counted ends that, and Return needs no count.
  type("line");
  type("in a");
  push(WynFindManager::find_next);
  EXPECT_TRUE(comes(count(), "2 of 100,000")) << count();
  view.setDocument(nullptr);
  EXPECT_EQ(count(), "");
}

TEST_F(find_bar, says_when_counting_gave_up) {
  set("|" + std::string(3000, 'a') + " aab");
  use_threads();
  manager.setOptions({{"regularExpression", true}});
  manager.orderFrontFindPanel(false);
  type("(a|a|aa)+\\1c|aab");
  EXPECT_TRUE(comes(desktop_.find().status, "Counting stopped: the pattern takes too long"));
}

TEST_F(find_bar, the_count_is_in_words) {
  search::all_places places;
  EXPECT_EQ(search::count_text(places, places.none), "No matches");
  places.starts.resize(1);
  EXPECT_EQ(search::count_text(places, places.none), "1 match");
  places.starts.resize(1234567);
  EXPECT_EQ(search::count_text(places, places.none), "1,234,567 matches");
  EXPECT_EQ(search::count_text(places, 999), "1,000 of 1,234,567");
  places.stopped = search::all_places::stop::many;
  EXPECT_EQ(search::count_text(places, 999), "1,000 of 1,234,567+");
}

TEST_F(find_bar, ticks_are_where_the_rows_of_matches_are) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    random_source random(seed);
    std::u16string const made = random.text(1 + random.up_to(2000), u"ab \n\t");
    set("|" + std::string(made.begin(), made.end()));
    if (random.up_to(1) == 0) perform("toggleSoftWrap:");
    manager.orderFrontFindPanel(false);
    type(random.up_to(1) == 0 ? "ab" : "b");
    text::view& shown = *view.view();
    std::size_t const height = 1 + random.up_to(300);
    auto const seen =
        static_cast<std::size_t>(host.visible_rect().height / view.layout().lineHeight());
    std::size_t const rows = std::max(seen, shown.lines());
    std::vector<std::size_t> expected;
    std::string const sought = fields().find;
    text::storage& storage = *shown.storage;
    for (std::size_t line = 0; line < storage.lines(); ++line) {
      std::u16string const units(storage.line_units(line));
      std::u16string const wanted(sought.begin(), sought.end());
      for (auto at = units.find(wanted); at != units.npos;
           at = units.find(wanted, at + wanted.size())) {
        text::view_iterator const place(&shown, text::iterator(line, at, &storage));
        std::size_t const tick = shown.line_in_view(place) * height / rows;
        if (expected.empty() || expected.back() != tick) expected.push_back(tick);
      }
    }
    EXPECT_EQ(view.scroll_ticks(height), expected) << seed;
    manager.closeFindPanel();
  }
}

TEST(entry_walk, goes_back_and_comes_back_to_what_was_typed) {
  platform::entry_walk walk;
  walk.set_entries({"new", "old"});
  EXPECT_EQ(walk.older("draft"), "new");
  EXPECT_EQ(walk.older("new"), "old");
  EXPECT_EQ(walk.older("old"), "old");
  EXPECT_EQ(walk.newer("old"), "new");
  EXPECT_EQ(walk.newer("new"), "draft");
  EXPECT_EQ(walk.newer("draft"), "draft");
  // What is shown already is passed over; what is edited is where another walk begins.
  EXPECT_EQ(walk.older("new"), "old");
  EXPECT_EQ(walk.older("older"), "new");
  EXPECT_EQ(walk.newer("new"), "older");
}

}  // namespace
