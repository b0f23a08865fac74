#include "regex/sliced_search.h"

#include "data_rows.h"
#include "platform/utf.h"

namespace {

using namespace oniguruma;
using std::u16string;

ptrn_t compiled(u16string const& source) {
  return ptrn_t(source.data(), source.data() + source.size(), 0);
}

struct outcome {
  search_state state;
  int begin, end;
  bool operator==(outcome const&) const = default;
};

std::ostream& operator<<(std::ostream& out, outcome const& o) {
  return out << static_cast<int>(o.state) << ":" << o.begin << "-" << o.end;
}

outcome run(regex::valid_text const& text, ptrn_t const& ptrn, std::size_t first, std::size_t last,
            direction where) {
  sliced_search search(text, ptrn, first, last, where);
  search_state state;
  while ((state = search.step()) == search_state::more) continue;
  if (state != search_state::found) return {state, -1, -1};
  auto const& m = search.match();
  return {state, static_cast<int>(m.begin(0)), static_cast<int>(m.end(0))};
}

/// Tries each place to begin at by itself; `anchored` is the pattern after "\\G".
outcome simple(regex::valid_text const& text, ptrn_t const& anchored, std::size_t first,
               std::size_t last, direction where) {
  auto const size = static_cast<std::ptrdiff_t>(text.size());
  for (std::size_t n = 0; n <= last - first; ++n) {
    std::size_t const at = where == direction::forward ? first + n : last - n;
    if (text.splits_pair(at)) continue;
    match_t const m = find(text, static_cast<std::ptrdiff_t>(at), size, &anchored);
    if (m) return {search_state::found, static_cast<int>(m.begin(0)), static_cast<int>(m.end(0))};
  }
  return {search_state::not_found, -1, -1};
}

TEST(sliced_search, finds_what_trying_each_place_finds) {
  char16_t const* const pieces[] = {u"a", u"a", u"b", u"\n", u"\U0001f600", u"\xd83d", u"\xde00"};
  std::mt19937 random(1);
  for (auto const& row : data_rows("searches.txt", "patterns")) {
    u16string const pattern = unicode::to_utf16(row[0]);
    ptrn_t const ptrn = compiled(pattern);
    bool const calls_itself = pattern == u"a\\g<0>?b";
    ptrn_t const anchored =
        compiled(u"\\G(?:" + u16string(calls_itself ? u"(?<n>a\\g<n>?b)" : pattern) + u")");
    ASSERT_TRUE(ptrn.ticking_regex());
    for (int round = 0; round < 300; ++round) {
      u16string units;
      for (unsigned n = random() % (round < 250 ? 12 : 300); n > 0; --n)
        units += pieces[random() % std::size(pieces)];
      regex::valid_text const text(units);
      std::size_t const first = random() % (units.size() + 1);
      std::size_t const last = first + random() % (units.size() - first + 1);
      for (direction where : {direction::forward, direction::backward})
        ASSERT_EQ(run(text, ptrn, first, last, where), simple(text, anchored, first, last, where))
            << unicode::to_utf8(pattern) << " in " << testing::PrintToString(units) << " from "
            << first << " to " << last << (where == direction::forward ? "" : " backward");
      sliced_find_all all(text, ptrn, 0, units.size());
      while (all.step() == search_state::more) continue;
      std::vector<captures_t> expected;
      find_all(units.data(), units.data() + units.size(), ptrn, expected);
      ASSERT_EQ(all.result(), expected) << unicode::to_utf8(pattern);
    }
  }
}

TEST(sliced_search, place_where_the_search_begins) {
  regex::valid_text const text(u"aab");
  ptrn_t const ptrn = compiled(u"\\Ga+b?");
  EXPECT_EQ(run(text, ptrn, 1, 3, direction::forward), (outcome{search_state::found, 1, 3}));
  EXPECT_EQ(run(text, ptrn, 2, 3, direction::forward), (outcome{search_state::not_found, -1, -1}));
  EXPECT_EQ(run(text, ptrn, 0, 1, direction::backward), (outcome{search_state::found, 1, 3}));
}

TEST(sliced_search, comes_back_where_each_attempt_is_long) {
  u16string const units(80'000, u'a');
  regex::valid_text const text(units);
  for (char16_t const* pattern : {u"a+(?=\\d)", u"(?>a+)[b-c]"}) {
    ptrn_t const ptrn = compiled(pattern);
    for (direction where : {direction::forward, direction::backward}) {
      sliced_search search(text, ptrn, 0, units.size(), where);
      for (int i = 0; i < 5; ++i) ASSERT_EQ(search.step(), search_state::more);
    }
  }
  u16string const short_lines = [] {
    u16string result;
    while (result.size() < 40'000) result += u16string(900, u'a') + u'\n';
    return result + u"c";
  }();
  EXPECT_EQ(run(regex::valid_text(short_lines), compiled(u"(?>a+)b|c"), 0, short_lines.size(),
                direction::forward),
            (outcome{search_state::found, 40'545, 40'546}));
  EXPECT_EQ(run(text, compiled(u"(a+a+)+b|c"), 0, 80'000, direction::forward).state,
            search_state::gave_up);
}

TEST(line_pattern, stays_in_its_line) {
  for (char16_t const* pattern :
       {u"", u"ab\\d+", u"[a-z_]+\\.(h|cc)\\b", u"(?i:x)(?<n>.)\\k<n>", u"(a)\\1",
        u"(?<!a)b(?=\\w)[\\]\\\\]", u"^\\[.*$", u"(?x) a b", u"\u00e4\\ "})
    EXPECT_TRUE(compiled(pattern).stays_in_line()) << unicode::to_utf8(pattern);
  for (char16_t const* pattern :
       {u"a\nb", u"\\s", u"\\W", u"[^a]", u"[[:space:]]", u"(?m:.)", u"(?mi).", u"(?-m:a)", u"\\n",
        u"\\u000a", u"[\\b-z]", u"[\\t- ]", u"[\t-z]", u"\\R", u"\\p{Space}", u"(?~a)",
        u"(?i)[\\h\\D]", u"\\Ga"})
    EXPECT_FALSE(compiled(pattern).stays_in_line()) << unicode::to_utf8(pattern);
  char16_t const* const dot = u".";
  EXPECT_FALSE(ptrn_t(dot, dot + 1, 4).stays_in_line());
}

}  // namespace
