#include "regex/format.h"

#include "test.h"
#include "text/storage.h"

namespace {

template <class Iterator>
std::string matches(Iterator first, Iterator last, regex::nfa<char> const& pattern) {
  std::string result;
  regex::find_all(first, last, pattern, [&](auto const& m) {
    for (std::size_t n = 0; n < m.size(); ++n) {
      if (!m.is_set(n)) continue;
      result += std::to_string(std::distance(first, m.begin(n))) + "-" +
                std::to_string(std::distance(first, m.end(n))) + " ";
    }
  });
  return result;
}

}  // namespace

// Over the lines of a buffer the engine finds what it finds in one piece of memory.
TEST(regex_over_storage, finds_and_replaces_in_both_directions) {
  std::u16string const text = u"foo bar\n\n  b\u00e4z1\t\nfoo\n(a(b))";
  text::storage storage;
  storage.insert(storage.end(-1), text.begin(), text.end());
  text::iterator const first(0, 0, &storage), last = storage.end(-1);
  auto const rfirst = std::make_reverse_iterator(last), rlast = std::make_reverse_iterator(first);
  for (char const* pattern :
       {"\\>|$", "^(\\s*)(\\w+)?", "\\w+", "\n\n", "(?<=\n)f|o(?=\n)", "(o)\\1.*?(\\w)", "(?s:.+)",
        "\\A.|.\\z", "(?i:FO*\\b)", "\\((?:[^()]|(?R))*\\)", "(?<!o)$", "nothing"}) {
    regex::nfa<char> const nfa(pattern);
    EXPECT_EQ(matches(first, last, nfa), matches(text.begin(), text.end(), nfa)) << pattern;
    EXPECT_EQ(matches(rfirst, rlast, nfa), matches(text.rbegin(), text.rend(), nfa)) << pattern;
  }
  std::u16string replaced;
  regex::replace(first, last, "^(\\s+)?(\\w+)", "$1<\\U$2\\E>", std::back_inserter(replaced));
  EXPECT_EQ(replaced, u"<FOO> bar\n\n  <B\u00c4Z1>\t\n<FOO>\n(a(b))");
}
