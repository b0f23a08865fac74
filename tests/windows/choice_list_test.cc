#include "windows/choice_list.h"

#include "platform/utf.h"
#include "projects/BriskStringRanker.h"
#include "test.h"
#include "text/random_text.h"

namespace {

using windows::choice_list;

choice_list::entries entries_of(std::vector<std::string> const& titles) {
  choice_list::entries all;
  all.count = titles.size();
  all.title = [&titles](std::size_t each) -> std::string_view { return titles[each]; };
  all.row = [](std::size_t) { return platform::picker_row(); };
  return all;
}

std::vector<std::string> shown(choice_list const& list) {
  std::vector<std::string> titles;
  for (std::size_t i = 0; i < list.count(); ++i)
    titles.push_back(unicode::to_utf8(list.row(i).title));
  return titles;
}

TEST(choice_list, letters_narrow_and_order_it) {
  std::vector<std::string> const titles{"C", "C++", "Objective-C", "Caf\u00e9", "CSS", "Pascal"};
  choice_list list("Language", entries_of(titles));
  EXPECT_EQ(shown(list), titles);
  EXPECT_EQ(list.note(), "6");
  list.set_filter("cs");
  EXPECT_EQ(shown(list), (std::vector<std::string>{"CSS"}));
  EXPECT_EQ(list.row(0).matched, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(list.entry(0), 4u);
  list.set_filter("cafe");
  EXPECT_EQ(shown(list), (std::vector<std::string>{"Caf\u00e9"}));
  list.set_filter("xyz");
  EXPECT_EQ(list.note(), "No matches.");
  list.set_filter("");
  EXPECT_EQ(shown(list), titles);
}

TEST(choice_list, a_list_begins_at_the_caret) {
  std::vector<styles::symbol> const symbols{{"a", 2}, {"b", 5}, {"c", 9}};
  struct row {
    std::size_t line, first;
  };
  for (row const& r : {row{1, 0}, row{2, 0}, row{8, 1}, row{9, 2}, row{100, 2}}) {
    choice_list list("Symbol", windows::symbol_entries(symbols, r.line));
    EXPECT_EQ(list.first_row(), r.first);
    list.set_filter("c");
    EXPECT_EQ(list.first_row(), 0u);
    EXPECT_EQ(list.row(0).detail, "line 9");
  }
}

// However letters come and go, what is shown is what the ranker finds; once few are left in the
// order that it gives.
TEST(choice_list, shows_what_the_ranker_finds) {
  for (unsigned seed = 1; seed <= 30; ++seed) {
    random_source random(seed);
    std::vector<std::string> titles;
    std::size_t const count = seed == 30 ? 60000 : random.up_to(60);
    for (std::size_t i = 0; i < count; ++i)
      titles.push_back(unicode::to_utf8(random.text(random.up_to(12), u"abAB _\u00e4\u00df")));
    choice_list list("List", entries_of(titles));
    std::string typed;
    for (int step = 0; step < 6; ++step) {
      if (random.up_to(3) == 0) typed.clear();
      typed += unicode::to_utf8(random.text(1, u"abA "));
      list.set_filter(typed);
      std::u16string const prepared =
          BriskStringRanker::prepareFilterString(unicode::to_utf16(typed));
      std::vector<std::pair<double, std::size_t>> expected;
      for (std::size_t i = 0; i < titles.size(); ++i) {
        double const score =
            BriskStringRanker(unicode::to_utf16(titles[i])).scoreForAbbreviation(prepared);
        if (prepared.empty() || score > -0.5) expected.emplace_back(-score, i);
      }
      bool const is_ordered = list.note().find(';') == std::string::npos && !prepared.empty();
      if (is_ordered) std::sort(expected.begin(), expected.end());
      std::vector<std::size_t> found, wanted;
      for (std::size_t i = 0; i < list.count(); ++i) found.push_back(list.entry(i));
      for (auto const& each : expected) wanted.push_back(each.second);
      if (is_ordered || prepared.empty()) {
        EXPECT_EQ(found, wanted) << seed << ' ' << typed;
      } else {
        EXPECT_TRUE(std::includes(found.begin(), found.end(), wanted.begin(), wanted.end()))
            << seed << ' ' << typed;
      }
    }
  }
}

}  // namespace
