#include "projects/BriskStringRanker.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/utf.h"
#include "text/random_text.h"

namespace {

using view = std::u16string_view;

bool is_subsequence(view a, view s) {
  for (; !a.empty() && !s.empty(); s.remove_prefix(1))
    if (a[0] == s[0]) a.remove_prefix(1);
  return a.empty();
}

/// The definition of the placement's score, which takes time that doubles with each letter.
double placement(view s, view a, double unit, double boost) {
  if (a.empty()) return 0;
  double word = -1, plain = 0;
  std::u16string const start{u' ', a[0]};
  if (auto const w = s.find(start); w != s.npos && is_subsequence(a, s.substr(w)))
    word = boost + unit + placement(s.substr(w + 2), a.substr(1), unit, boost * 0.5);
  if (auto const p = s.find(a[0]); p != s.npos)
    plain = placement(s.substr(p + 1), a.substr(1), unit, boost * 0.5);
  return plain > word ? plain : word;
}

/// The same for the letters that stand together.
double runs(view s, view a, double unit) {
  double best = 0;
  while (!s.empty() && a.size() >= 2) {
    auto p = s.find(a[0]);
    if (p == s.npos || !is_subsequence(a.substr(1), s.substr(p + 1))) break;
    if (p + 1 < s.size() && s[p + 1] == a[1]) {
      double run = 0;
      while (p < s.size() && !a.empty() && s[p] == a[0]) {
        run += unit;
        ++p;
        a.remove_prefix(1);
      }
      s = s.substr(p);
      best = std::max(best, run + runs(s, a, unit));
    } else {
      s = s.substr(p + 1);
    }
  }
  return best;
}

double expected_score(view s, view a) {
  if (a.empty() || !is_subsequence(a, s)) return -1;
  auto const n = static_cast<double>(a.size());
  double const unit = 1.0 / (n + 1);
  double score = std::max(placement(s, a, unit, unit * 0.5), runs(s, a, unit));
  if (s.find(a) != s.npos) score += 1.0 / (std::pow(2, n + 1) * (n + 1));
  if (s[1] == a[0]) score += 1.0 / (std::pow(2, n + 2) * (n + 1));
  double blanks = 0;
  for (char16_t const unit_of_s : s) blanks += unit_of_s == u' ' ? 1 : 0;
  return score + score / ((blanks + 1.0) * unit) / (std::pow(2, n + 3) * (n + 1));
}

double score(char const* name, char const* typed) {
  return BriskStringRanker(unicode::to_utf16(name))
      .scoreForAbbreviation(BriskStringRanker::prepareFilterString(unicode::to_utf16(typed)));
}

std::string masked(char const* name, char const* typed) {
  auto text = unicode::to_utf16(name);
  std::u16string marked;
  auto const mask = BriskStringRanker(text).maskForAbbreviation(unicode::to_utf16(typed));
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (std::find(mask.begin(), mask.end(), i) != mask.end()) marked += u'*';
    marked += text[i];
  }
  return unicode::to_utf8(marked);
}

}  // namespace

// Names of lower-case words, whose searchable form is the name with a blank before it.
TEST(ranker, scores_are_those_of_the_definition) {
  for (unsigned seed = 0; seed < 20000; ++seed) {
    random_source random(seed);
    std::u16string name;
    for (std::size_t words = random.up_to(3) + 1; words != 0; --words) {
      if (!name.empty()) name += u' ';
      name += random.text(random.up_to(4) + 1, u"abc");
    }
    auto const typed = random.text(random.up_to(5), u"abc");
    ASSERT_NEAR(BriskStringRanker(name).scoreForAbbreviation(typed),
                expected_score(u' ' + name, typed), 1e-12)
        << "seed " << seed << ": " << unicode::to_utf8(name) << " by " << unicode::to_utf8(typed);
  }
}

TEST(ranker, prefers_word_starts_and_whole_names) {
  EXPECT_GT(score("fooBar", "fb"), score("fabric", "fb"));
  EXPECT_GE(score("foobar", "oa"), 0);
  EXPECT_EQ(score("foobar", "ao"), -1);
  EXPECT_EQ(score("foobar", ""), -1);
  EXPECT_EQ(score("", "a"), -1);
  EXPECT_GT(score("find", "find"), score("find next", "find"));
  EXPECT_GT(score("\xc3\x89"
                  "a",
                  "ea"),
            0);
  EXPECT_EQ(score("don't", "dont"), score("dont", "dont"));
  EXPECT_EQ(score("a-b", "A B!"), score("a b", "ab"));
}

TEST(ranker, masks_name_the_matched_units) {
  EXPECT_EQ(masked("fooBar", "fb"), "*foo*Bar");
  EXPECT_EQ(masked("x_foo-bar", "fb"), "x_*foo-*bar");
  EXPECT_EQ(masked("E\xcc\x81"
                   "a",
                   "ea"),
            "*E\xcc\x81*a");
  EXPECT_EQ(masked("\xc3\x89"
                   "a",
                   "ea"),
            "*\xc3\x89*a");
  EXPECT_EQ(masked("foobar", "ao"), "foobar");
}

TEST(ranker, long_names_cost_no_more_than_their_length) {
  std::u16string name, typed;
  for (int i = 0; i < 2000; ++i) name += u"ab ";
  for (int i = 0; i < 60; ++i) typed += u"ab";
  EXPECT_GT(BriskStringRanker(name).scoreForAbbreviation(typed), 0);
}
