#include "data_rows.h"
#include "keys/displayed_keys.h"
#include "keys/key_strings.h"
#include "keys/mnemonics.h"
#include "plist/text_reader.h"
#include "text/random_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

// Which keys the entries of menus show, and which letters are underlined in them.
namespace {

std::vector<std::string> shown(char const* menu, char const* bindings) {
  auto items = platform::menu_from_value(plist::convert(menu, nullptr));
  keys::add_bound_keys(items,
                       keys::NormalizeDictionary(plist::convert(bindings, nullptr).entries()));
  std::vector<std::string> result;
  for (platform::menu_item const& item : items) {
    std::string all;
    for (auto const& each : item.keys)
      all += (all.empty() ? "" : ", ") + keys::displayed_keys(each);
    result.push_back(all);
  }
  return result;
}

TEST(menu_keys, are_displayed_as_other_programs_do) {
  for (auto const& row : data_rows("keys.txt", "displayed"))
    EXPECT_EQ(keys::displayed_key(row[0]), row[1]) << row[0];
}

TEST(menu_keys, are_those_of_the_menu_and_of_bindings) {
  char const* const menu = R"((
    { title = a; selector = 'copy:'; key = '@c'; }, { title = b; selector = 'paste:'; key = '@v'; },
    { title = c; selector = 'redo:'; key = '$@z'; }, { title = d; selector = 'up:'; argument = 1; },
    { title = e; selector = 'up:'; }, { title = f; selector = 'none:'; }, { separator = 1; } ))";
  EXPECT_EQ(shown(menu, "{ }"),
            (std::vector<std::string>{"Ctrl+C", "Ctrl+V", "Ctrl+Shift+Z", "", "", "", ""}));
  EXPECT_EQ(shown(menu, R"({ '@c' = 'noop:'; '^x' = { 'u' = 'up:'; }; '~@u' = 'up:'; '@y' = 'redo:';
                       '@Z' = 'redo:'; '@v' = ('moveLeft:', 'paste:'); '~v' = 'paste:'; })"),
            (std::vector<std::string>{"", "Alt+V", "Ctrl+Shift+Z, Ctrl+Y", "",
                                      "Ctrl+Alt+U, Meta+X U", "", ""}));
}

std::string underlined(std::vector<keys::mnemonic_title> const& titles) {
  std::string result;
  auto const places = keys::mnemonic_places(titles);
  for (std::size_t i = 0; i < places.size(); ++i)
    result += places[i] == std::string::npos ? '-' : titles[i].title[places[i]];
  return result;
}

TEST(mnemonics, are_the_first_letters_where_these_are_free) {
  EXPECT_EQ(underlined({{"Save", ""}, {"Don't Save", ""}, {"Cancel", ""}}), "SDC");
  EXPECT_EQ(underlined({{"Cut", "t"}, {"Copy", ""}, {"Paste", ""}, {"Paste Previous", ""}}),
            "tCPa");
  EXPECT_EQ(underlined({{"aa", ""}, {"ab", ""}, {"a\u2026", ""}, {"\u00e9", ""}}), "ab--");
  EXPECT_EQ(underlined({{"ab", "z"}, {"a", ""}}), "ba");
}

// As many as there can be, none twice.
TEST(mnemonics, equal_what_trying_all_ways_finds) {
  constexpr unsigned seeds = 400;
  for (unsigned seed = 1; seed <= seeds; ++seed) {
    random_source random(seed);
    std::vector<keys::mnemonic_title> titles(1 + random.below(6));
    for (auto& each : titles)
      for (std::size_t n = random.up_to(4); n > 0; --n) each.title += "abcAB \x80"[random.below(7)];
    std::function<std::size_t(std::size_t, std::set<int>)> const most = [&](std::size_t n,
                                                                            std::set<int> used) {
      if (n == titles.size()) return std::size_t{0};
      std::size_t best = most(n + 1, used);
      for (unsigned char const c : titles[n].title) {
        std::set<int> with = used;
        if (c < 0x80 && c != ' ' && with.insert(std::tolower(c)).second)
          best = std::max(best, 1 + most(n + 1, with));
      }
      return best;
    };
    std::set<int> given;
    std::size_t count = 0;
    for (char const c : underlined(titles))
      if (c != '-') ++count, given.insert(std::tolower(c));
    EXPECT_EQ(count, most(0, {})) << "seed " << seed;
    EXPECT_EQ(given.size(), count) << "seed " << seed;
  }
}

}  // namespace
