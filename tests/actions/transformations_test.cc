#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <sstream>

#include "actions/capitalize.h"
#include "actions/convert_spaces.h"
#include "actions/line_order.h"
#include "actions/reformat.h"
#include "actions/shift_lines.h"
#include "platform/utf.h"
#include "regex/format.h"
#include "test.h"
#include "text/random_text.h"
#include "text/tab_width.h"

using namespace actions;

// The transformations are loops where patterns would say the same more slowly; here they are
// compared with these patterns, and with what the shell's tools make of a text.

using namespace std::string_view_literals;

namespace {

std::u16string replaced(std::u16string const& text, char const* pattern, char const* format) {
  std::u16string result;
  if (!text.empty())
    regex::replace(text.begin(), text.end(), pattern, format, std::back_inserter(result));
  return result;
}

struct reference {
  char const* name;
  std::function<std::u16string(std::u16string const&)> fast, slow;
};

reference const references[] = {
    {"shift left", [](auto const& text) { return shifted_left(text, 4, false); },
     [](auto const& text) {
       return replaced(text, R"(^(/\*(?=\t)|\*/|//(?=\t))?[\t ](.*)$)", "$1$2");
     }},
    {"shift left by spaces",
     [](auto const& text) {
       return text.find(u'\t') == text.npos ? shifted_left(text, 4, true) : text;
     },
     [](auto const& text) {
       return text.find(u'\t') == text.npos ? replaced(text, "^( {,4}|\\t)(.*)$", "$2") : text;
     }},
    {"shift right", [](auto const& text) { return shifted_right(text, 4, false); },
     [](auto const& text) {
       return replaced(text, R"(^(/\*(?:\t|$)|\*/(?:\t|$))?(\s*)(.+)?$)", "$1(?3\t:)$2$3");
     }},
    {"shift right by spaces", [](auto const& text) { return shifted_right(text, 4, true); },
     [](auto const& text) { return replaced(text, R"(^(\s*)(.+)?$)", "(?2    :)$1$2"); }},
    {"unwrap", [](auto const& text) { return unwrapped(text); },
     [](auto const& text) {
       auto const trimmed = replaced(text, "\\s+\\n", "\n");
       auto const joined = replaced(trimmed, R"((\A)?\n(\n+)?(\z)?)", "?1:?3\n:?2\n\n: ");
       return replaced(joined, R"((\A\s+)?(?(1):(?:\s)+)(\z)?)", "?1$1:?2: ");
     }},
};

std::vector<std::u16string> words_of(std::u16string const& text) {
  std::istringstream in(unicode::to_utf8(text));
  std::vector<std::u16string> words;
  for (std::string word; in >> word;) words.push_back(unicode::to_utf16(word));
  return words;
}

std::vector<std::u16string> lines_of(std::u16string const& text) {
  std::vector<std::u16string> lines(1);
  for (char16_t const unit : text)
    if (unit == u'\n')
      lines.emplace_back();
    else
      lines.back() += unit;
  return lines;
}

}  // namespace

TEST(transformations, agree_with_their_patterns) {
  for (unsigned seed = 0; seed < 3000; ++seed) {
    random_source random(seed);
    auto const text = random.text(random.up_to(14), u"  \t\n\nab*//");
    for (auto const& row : references)
      ASSERT_EQ(unicode::to_utf8(row.fast(text)), unicode::to_utf8(row.slow(text)))
          << row.name << ", seed " << seed << " of\n"
          << unicode::to_utf8(text);
  }
}

TEST(transformations, reformatting_keeps_words_within_the_width) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_source random(seed);
    auto const text = random.text(random.up_to(80), u"aaabbb-  \n\n\u00e9");
    bool const justify = random.one_in(2);
    auto const result = reformatted(text, {10, 4, justify, false});
    bool const has_long_words = [&] {
      for (auto const& word : words_of(text))
        if (word.size() > 8) return true;
      return false;
    }();
    if (!has_long_words) ASSERT_EQ(words_of(result), words_of(text));
    for (auto const& line : lines_of(result))
      if (words_of(line).size() > 1) ASSERT_LE(line.size(), 10u) << unicode::to_utf8(result);
  }
}

TEST(transformations, rows_hang_below_the_text_after_a_mark) {
  for (char16_t const mark : u"*-o\u2022\u00b7x#"sv) {
    bool const hangs = mark != u'x' && mark != u'#';
    EXPECT_EQ(
        reformatted(u" " + std::u16string(1, mark) + u" aaaa bbbb\ncc", {8, 4, false, true}),
        u" " + std::u16string(1, mark) + u" aaaa\n" + (hangs ? u"   bbbb\n   cc" : u"bbbb cc"))
        << unicode::to_utf8(std::u16string(1, mark));
  }
}

TEST(transformations, outer_words_are_capitals_and_some_inner_ones_are_not) {
  struct {
    char16_t const *text, *capital;
  } const cases[] = {{u"the LORD of the rings", u"The Lord of the Rings"},
                     {u"of mice, and MEN of", u"Of Mice, and Men Of"},
                     {u"of\n", u"Of\n"},
                     {u"one of\nof two\n", u"One of\nof Two\n"},
                     {u"(of) and-then 'of' of.", u"(Of) And-then 'of' of."}};
  auto const is_excluded = [](std::u16string const& word) {
    return word == u"of" || word == u"the" || word == u"and";
  };
  for (auto const& [text, capital] : cases)
    EXPECT_EQ(unicode::to_utf8(capitalized(text, is_excluded)), unicode::to_utf8(capital));
}

TEST(transformations, tabs_for_spaces_change_no_column) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    random_source random(seed);
    auto const text = random.text(random.up_to(30), u"ab   \t\n");
    size_t const start = random.up_to(5);
    auto const before = lines_of(text), after = lines_of(spaces_to_tabs(text, 4, start));
    ASSERT_EQ(before.size(), after.size());
    for (size_t i = 0; i < before.size(); ++i)
      ASSERT_EQ(text::expanded_width(before[i], start, text::tab_stops(4)),
                text::expanded_width(after[i], start, text::tab_stops(4)))
          << "seed " << seed;
  }
}

TEST(transformations, lines_are_ordered_as_their_utf8) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    random_source random(seed);
    std::vector<std::string> lines;
    std::u16string text;
    for (size_t n = random.up_to(30); n != 0; --n) {
      static constexpr char const* pieces[] = {
          "a", "b", " ", "\xc3\xa9", "\xef\xbc\x8a", "\xf0\x9f\x98\x80"};
      std::string line;
      for (size_t k = random.up_to(7); k != 0; --k) line += pieces[random.below(6)];
      lines.push_back(line);
      text += unicode::to_utf16(line) + u'\n';
    }
    std::sort(lines.begin(), lines.end());
    std::string expected;
    for (auto const& line : lines) expected += line + '\n';
    ASSERT_EQ(unicode::to_utf8(sorted_lines(text)), expected) << "seed " << seed;
  }
}
