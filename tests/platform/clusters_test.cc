#include "platform/clusters.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include "platform/utf.h"
#include "test.h"
#include "test.h"

namespace {

using breaks = std::vector<std::size_t>;

breaks found_forward(std::u16string_view text) {
  breaks result;
  for (std::size_t at = 0; at < text.size();) {
    std::size_t const from = at;
    result.push_back(at = unicode::next_grapheme_break(text, at));
    EXPECT_EQ(unicode::cluster_at(text, from).end, at);
    // From within the cluster the same end is found.
    for (std::size_t inside = from + 1; inside < at; ++inside)
      EXPECT_EQ(unicode::next_grapheme_break(text, inside), at);
  }
  return result;
}

breaks found_backward(std::u16string_view text) {
  breaks result;
  for (std::size_t at = text.size(); at > 0;) {
    result.insert(result.begin(), at);
    std::size_t const end = at;
    at = unicode::previous_grapheme_break(text, at);
    for (std::size_t inside = at + 1; inside < end; ++inside)
      EXPECT_EQ(unicode::previous_grapheme_break(text, inside), at);
  }
  return result;
}

breaks asked_one_by_one(std::u16string_view text) {
  breaks result;
  for (std::size_t at = 1; at <= text.size(); ++at)
    if (unicode::is_grapheme_break(text, at)) result.push_back(at);
  return result;
}

breaks breaks_of_icu(std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> const it(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  EXPECT_TRUE(U_SUCCESS(status));
  icu::UnicodeString const string(text.data(), static_cast<std::int32_t>(text.size()));
  it->setText(string);
  breaks result;
  for (auto at = it->next(); at != icu::BreakIterator::DONE; at = it->next())
    result.push_back(static_cast<std::size_t>(at));
  return result;
}

struct cluster_row {
  std::u16string text;
  std::vector<unsigned> columns;  // of each cluster
  breaks ends;                    // of each cluster
};

TEST(clusters, a_table_of_clusters_and_their_columns) {
  cluster_row const rows[] = {
      {u"", {}, {}},
      {u"aé\u00AD", {1, 1, 1}, {1, 2, 3}},
      {u"a\r\nb", {1, 1, 1}, {1, 3, 4}},
      {u"e\u0301x", {1, 1}, {2, 3}},
      {u"a\u0301\u0302\u0303\u0304", {1}, {5}},
      {u"\u0301a", {0, 1}, {1, 2}},   // a mark with nothing to stand on
      {u"\t\u0301", {1, 0}, {1, 2}},  // controls take no mark
      {u"a\u200Bb", {1, 0, 1}, {1, 2, 3}},
      {u"a\u200Db", {1, 1}, {2, 3}},
      {u"中文", {2, 2}, {1, 2}},
      {u"ｱＡ", {1, 2}, {1, 2}},
      {u"か\u3099", {2}, {2}},
      {u"𠮷a", {2, 1}, {2, 3}},
      {u"한국", {2, 2}, {1, 2}},
      {u"\u1100\u1161\u11A8a", {2, 1}, {3, 4}},
      {u"각\u11A8", {2}, {2}},
      {u"😀😀", {2, 2}, {2, 4}},
      {u"👍🏽!", {2, 1}, {4, 5}},
      {u"👩‍👩‍👧!", {2, 1}, {8, 9}},
      {u"👩\u200Da", {2, 1}, {3, 4}},
      {u"❤\uFE0F\u200D🔥", {2}, {5}},
      {u"🇩🇪🇫🇷", {2, 2}, {4, 8}},
      {u"🇩🇪🇫", {2, 1}, {4, 6}},
      {u"🏴\U000E0067\U000E0062\U000E0065\U000E006E\U000E0067\U000E007F", {2}, {14}},
      {u"❤❤\uFE0F❤\uFE0E", {1, 2, 1}, {1, 3, 5}},
      {u"⌚\uFE0E⌚⌚\uFE0F", {1, 2, 2}, {2, 3, 5}},
      {u"1\uFE0F\u20E3"
       u"1\u20E3",
       {2, 1},
       {3, 5}},
      {u"a\uFE0F", {1}, {2}},
      {u"का", {2}, {2}},
      {u"क\u094D", {1}, {2}},
      {u"क\u094Dषि", {2}, {4}},
      {u"क\u094D\u200Cष", {1, 1}, {3, 4}},
      {u"क\u094D\u200Dष", {2}, {4}},
      {u"ก\u0E33", {2}, {2}},
      {u"\u0600\u0661", {2}, {2}},  // the Arabic number sign goes under the digits
      {u"سلام", {1, 1, 1, 1}, {1, 2, 3, 4}},
      {u"س\u064E", {1}, {2}},
      {u"\xD83D"
       u"a",
       {1, 1},
       {1, 2}},
      {u"\xDE00\xD83D", {1, 1}, {1, 2}},
      {u"\xD83D\u0301", {1}, {2}},
  };
  for (auto const& row : rows) {
    SCOPED_TRACE(unicode::to_utf8(row.text));
    EXPECT_EQ(found_forward(row.text), row.ends);
    EXPECT_EQ(found_backward(row.text), row.ends);
    EXPECT_EQ(asked_one_by_one(row.text), row.ends);
    std::vector<unsigned> columns;
    for (std::size_t at = 0; at < row.text.size();) {
      auto const cluster = unicode::cluster_at(row.text, at);
      columns.push_back(cluster.columns);
      at = cluster.end;
    }
    EXPECT_EQ(columns, row.columns);
  }
}

/// One of each kind that the rules know, and more of those that depend on what stands before. No
/// consonants of India: what they join to has changed with the versions of ICU.
char16_t const* const kinds[] = {u"a",      u"\r",     u"\n",     u"\u0085", u"\u0301", u"\u200C",
                                 u"\u200D", u"\u200D", u"\u0903", u"\u0600", u"🇩",      u"🇪",
                                 u"\u1100", u"\u1161", u"\u11A8", u"가",     u"각",     u"😀",
                                 u"❤",      u"©",      u"\uFE0F", u"🏽",   u"中",     u"\u200B",
                                 u"\u094D", u"\xD83D", u"\xDE00", u"#"};

TEST(clusters, breaks_are_those_of_icu) {
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    std::mt19937 random(seed);
    std::u16string text;
    for (int n = 1 + static_cast<int>(random() % 12); n > 0; --n)
      text += kinds[random() % std::size(kinds)];
    SCOPED_TRACE("seed " + std::to_string(seed) + ": " + unicode::to_utf8(text));
    breaks const expected = breaks_of_icu(text);
    ASSERT_EQ(found_forward(text), expected);
    ASSERT_EQ(found_backward(text), expected);
    ASSERT_EQ(asked_one_by_one(text), expected);
  }
}

TEST(clusters, a_long_one_is_found_whole) {
  std::u16string const text = u"a" + std::u16string(1000, u'\u0301') + u"b";
  EXPECT_EQ(unicode::next_grapheme_break(text, 0), 1001u);
  EXPECT_EQ(unicode::next_grapheme_break(text, 1000), 1001u);
  EXPECT_EQ(unicode::next_grapheme_break(text, 1001), 1002u);
  EXPECT_EQ(unicode::previous_grapheme_break(text, 1001), 0u);
}

}  // namespace
