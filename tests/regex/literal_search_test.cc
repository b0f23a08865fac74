#include "regex/literal_search.h"

#include "regex/traits.h"
#include "test.h"
#include "text/random_text.h"

namespace {

using view = std::u16string_view;

bool equal(char16_t a, char16_t b, bool ignore_case) {
  return ignore_case ? regex::traits<char16_t>::equal_nocase(a, b) : a == b;
}

// Few letters, so that hits and near hits are many; k and the Kelvin sign, and lone surrogates.
constexpr view alphabets[] = {u"ab", u"aAbB\n", u"kK\u212A\xD800\u00E9\u00C9"};

TEST(literal_search, agrees_with_comparing_at_each_place) {
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    random_source random(seed);
    view const alphabet = alphabets[random.below(std::size(alphabets))];
    std::u16string const text = random.text(random.up_to(300), alphabet);
    std::u16string const sought =
        random.text(1 + random.up_to(random.one_in(4) ? 40 : 4), alphabet);
    bool const ignore_case = random.one_in(2);
    regex::literal_search const search(sought, ignore_case);
    auto const same = [&](char16_t a, char16_t b) { return equal(a, b, ignore_case); };
    auto const first = text.data(), last = first + text.size();
    EXPECT_EQ(
        search.find(first, last) - first,
        std::search(text.begin(), text.end(), sought.begin(), sought.end(), same) - text.begin())
        << seed;
    EXPECT_EQ(
        search.find_last(first, last) - first,
        std::find_end(text.begin(), text.end(), sought.begin(), sought.end(), same) - text.begin())
        << seed;
  }
}

TEST(literal_search, takes_linear_time_where_all_is_alike) {
  std::u16string const text(4000000, u'a');
  regex::literal_search const search(std::u16string(100000, u'a') + u'b', false);
  EXPECT_EQ(search.find(text.data(), text.data() + text.size()), text.data() + text.size());
  EXPECT_EQ(search.find_last(text.data(), text.data() + text.size()), text.data() + text.size());
}

}  // namespace
