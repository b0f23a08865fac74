#include "projects/BriskStringRanker.h"

#include "platform/utf.h"
#include "test.h"
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

/// A name as it is searched, and for each unit the one of the name that it came from.
struct searched_name {
  std::u16string text = u" ";
  std::vector<std::size_t> origins = {0};
};

searched_name searched(view name) {
  std::u16string units;
  std::vector<std::size_t> origins;
  for (std::size_t i = 0; i < name.size(); ++i)
    for (char16_t const unit : name[i] == u'\u00C9' ? u"E\u0301" : std::u16string(1, name[i])) {
      units += unit;
      origins.push_back(i);
    }
  searched_name result;
  bool at_word_start = true;
  for (std::size_t i = 0; i < units.size(); ++i) {
    char16_t const unit = units[i];
    auto const put = [&](char16_t normal) {
      result.text += normal;
      result.origins.push_back(origins[i]);
    };
    if (unit == u'\u0301') continue;
    if (u'A' <= unit && unit <= u'Z') {
      if (!at_word_start) put(u' ');
      put(static_cast<char16_t>(unit + 0x20));
      at_word_start = false;
    } else if (view(u"abcde1").find(unit) != view::npos) {
      put(unit);
      at_word_start = false;
    } else if (unit != u'\'' && unit != u'.' && !at_word_start && i + 1 < units.size()) {
      put(u' ');
      at_word_start = true;
    }
  }
  return result;
}

/// The places in `s` at which the placement takes the letters.
void mark_places(view s, view a, double unit, double boost, std::size_t offset,
                 std::vector<std::size_t>& places) {
  if (a.empty()) return;
  double word = -1;
  std::size_t const w = s.find(std::u16string{u' ', a[0]}), p = s.find(a[0]);
  if (w != s.npos && is_subsequence(a, s.substr(w)))
    word = boost + unit + placement(s.substr(w + 2), a.substr(1), unit, boost * 0.5);
  double const plain = placement(s.substr(p + 1), a.substr(1), unit, boost * 0.5);
  std::size_t const at = plain > word ? p : w + 1;
  places.push_back(offset + at);
  mark_places(s.substr(at + 1), a.substr(1), unit, boost * 0.5, offset + at + 1, places);
}

testing::AssertionResult ranks_as_defined(std::u16string const& name, std::u16string const& typed) {
  BriskStringRanker const ranker(name);
  searched_name const found = searched(name);
  double const expected = name.empty() ? -1 : expected_score(found.text, typed);
  double const unit = 1.0 / (static_cast<double>(typed.size()) + 1);
  std::vector<std::size_t> mask;
  if (expected >= 0) mark_places(found.text, typed, unit, unit * 0.5, 0, mask);
  for (std::size_t& place : mask) place = found.origins[place];
  if (std::abs(ranker.scoreForAbbreviation(typed) - expected) < 1e-12 &&
      ranker.maskForAbbreviation(typed) == mask)
    return testing::AssertionSuccess();
  return testing::AssertionFailure() << unicode::to_utf8(name) << " by " << unicode::to_utf8(typed);
}

double score(char const* name, char const* typed) {
  return BriskStringRanker(unicode::to_utf16(name))
      .scoreForAbbreviation(BriskStringRanker::prepareFilterString(unicode::to_utf16(typed)));
}

}  // namespace

TEST(ranker, scores_and_masks_are_those_of_the_definition) {
  view const letters = u"aB\u00C9\u0301-'.1";
  for (std::size_t number = 0, count = 1; count <= 32768; number = 0, count *= letters.size())
    for (; number < count; ++number) {
      std::u16string name;
      for (std::size_t rest = number, place = count; place > 1; place /= letters.size()) {
        name += letters[rest % letters.size()];
        rest /= letters.size();
      }
      for (char16_t const* const typed : {u"", u"a", u"ab", u"b1", u"eab", u"ba"})
        ASSERT_TRUE(ranks_as_defined(name, typed));
    }
  for (unsigned seed = 0; seed < 20000; ++seed) {
    random_source random(seed);
    auto const name = random.text(random.up_to(16), u"abcabcABC\u00C9  -_'.1");
    ASSERT_TRUE(ranks_as_defined(name, random.text(random.up_to(5), u"abce1"))) << "seed " << seed;
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

TEST(ranker, long_names_cost_no_more_than_their_length) {
  BriskStringRanker const ranker(repeated(std::u16string(u"ab "), 2000));
  EXPECT_GT(ranker.scoreForAbbreviation(repeated(std::u16string(u"ab"), 60)), 0);
}
