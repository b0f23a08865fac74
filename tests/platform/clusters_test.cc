#include "platform/clusters.h"

#include <unicode/brkiter.h>
#include <unicode/unistr.h>

#include "data_rows.h"
#include "platform/utf.h"

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

TEST(clusters, are_those_of_the_file) {
  auto const numbers = [](std::string const& text) {
    std::istringstream in(text);
    return breaks{std::istream_iterator<std::size_t>(in), {}};
  };
  for (auto const& row : data_rows("clusters.txt", "clusters")) {
    SCOPED_TRACE(row[0]);
    std::u16string const text = unicode::to_utf16(row[0]);
    breaks const ends = numbers(row[2]);
    EXPECT_EQ(found_forward(text), ends);
    EXPECT_EQ(found_backward(text), ends);
    EXPECT_EQ(asked_one_by_one(text), ends);
    breaks columns;
    for (std::size_t at = 0; at < text.size(); at = unicode::cluster_at(text, at).end)
      columns.push_back(unicode::cluster_at(text, at).columns);
    EXPECT_EQ(columns, numbers(row[1]));
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
