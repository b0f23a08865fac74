#include "regex/oniguruma.h"

#include "platform/utf.h"
#include "regex/oniguruma_format.h"
#include "source_tree.h"
#include "test.h"

namespace {

using std::u16string;

oniguruma::ptrn_t compiled(u16string const& source, unsigned options = 0) {
  return oniguruma::ptrn_t(source.data(), source.data() + source.size(), options);
}

/// "0-3 1:1-2": the whole match and the groups that are set; "none"; "gave up".
std::string describe(oniguruma::match_t const& m) {
  if (!m) return m.gave_up() ? "gave up" : "none";
  std::string result;
  for (std::size_t n = 0; n < m.size(); ++n) {
    if (!m.is_set(n)) continue;
    if (n > 0) result += " " + std::to_string(n) + ":";
    result += std::to_string(m.begin(n)) + "-" + std::to_string(m.end(n));
  }
  return result;
}

std::string find(u16string const& pattern, u16string const& text, std::ptrdiff_t from,
                 std::ptrdiff_t to, std::ptrdiff_t text_end = -1) {
  auto const ptrn = compiled(pattern);
  return describe(oniguruma::find(text.data(), from, to, &ptrn, 0, text_end));
}

std::string find(u16string const& pattern, u16string const& text) {
  return find(pattern, text, 0, static_cast<std::ptrdiff_t>(text.size()));
}

TEST(oniguruma, offsets_are_units_and_only_to_and_text_end_limit_what_is_seen) {
  EXPECT_EQ(find(u"(b+)(x)?(c)", u"a\xd83d\xde00ḃbbc"), "4-7 1:4-6 3:6-7");
  EXPECT_EQ(find(u"^b", u"ab", 1, 2), "none");
  EXPECT_EQ(find(u"(?<=a)b", u"ab", 1, 2), "1-2");
  EXPECT_EQ(find(u"a$", u"aab", 0, 2), "1-2");
  EXPECT_EQ(find(u"a$", u"aab", 0, 2, 3), "none");
  EXPECT_EQ(find(u"a+", u"aaab", 0, 2, 4), "0-2");
  EXPECT_EQ(find(u"a", u"aab", 2, 0, 3), "1-2");
  auto const ptrn = compiled(u"(a)?b");
  auto const m = oniguruma::find(u"b", 0, 1, &ptrn);
  EXPECT_FALSE(m.is_set(1));
  EXPECT_EQ(m.begin(1), 0);
  EXPECT_EQ(m.end(2), -1);
  EXPECT_EQ(oniguruma::match_t().begin(0), -1);
  EXPECT_EQ(describe(oniguruma::find(u"b", 0, 1, nullptr)), "none");
}

TEST(oniguruma, text_with_lone_surrogates) {
  u16string const text =
      u"a\xdc00\xd83d\xde00\xd83d"
      u"b\xd83d";
  EXPECT_EQ(find(u".", text, 1, 7), "1-2");
  EXPECT_EQ(find(u"\ufffd", text, 2, 7), "4-5");
  EXPECT_EQ(find(u"\xd83d", text, 2, 7), "4-5");
  EXPECT_EQ(find(u".b.", text), "4-7");
  // Within a pair no match begins.
  EXPECT_EQ(find(u".", text, 3, 7), "4-5");
  EXPECT_EQ(find(u"", text, 3, 3, 7), "none");
  // What is seen ends within the pair.
  EXPECT_EQ(find(u"..$", text, 0, 3), "1-3");
}

TEST(oniguruma, what_is_wrong_is_thrown_and_patterns_compare_by_source) {
  try {
    compiled(u"a(é");
    FAIL();
  } catch (std::invalid_argument const& e) {
    EXPECT_STREQ(e.what(), "end pattern with unmatched parenthesis for pattern a(é");
  }
  EXPECT_EQ(compiled(u"a|b"), compiled(u"a|b"));
  EXPECT_FALSE(compiled(u"a|b") == compiled(u"a|c"));
}

TEST(oniguruma, limits_are_told_apart_from_no_match) {
  EXPECT_EQ(find(u"^(a+a+)+$", u16string(40, u'a') + u"b"), "gave up");
  EXPECT_EQ(find(u"^(.|x)*[yz]", u16string(3'000'000, u'a')), "gave up");
  auto const ptrn = compiled(u"(a|a)+b|c");
  std::vector<oniguruma::captures_t> all;
  u16string const text = u"cc" + u16string(60, u'a');
  EXPECT_FALSE(oniguruma::find_all(text.data(), text.data() + text.size(), ptrn, all));
  EXPECT_EQ(all.size(), 2u);
}

TEST(oniguruma, find_all_leaves_out_what_ends_at_the_start) {
  u16string const text = u"a\xd83d\xde00";
  std::vector<oniguruma::captures_t> all;
  EXPECT_TRUE(oniguruma::find_all(text.data(), text.data() + 3, compiled(u"(?=(a)?)"), all));
  using map = oniguruma::captures_t;
  EXPECT_EQ(all, (std::vector<map>{{{1, {0, 1}}}, {{0, {1, 1}}}, {{0, {3, 3}}}}));
}

/// The text with each match replaced; nothing before offset 0 is known of an empty match there.
u16string replaced(u16string const& pattern, u16string const& text, std::string const& format) {
  std::vector<oniguruma::captures_t> all;
  oniguruma::find_all(text.data(), text.data() + text.size(), compiled(pattern), all);
  oniguruma::format expand(format.c_str());
  u16string result;
  std::size_t at = 0;
  for (auto const& captures : all) {
    auto const whole = captures.find(0);
    if (whole == captures.end()) continue;
    result.append(text, at, static_cast<std::size_t>(whole->second.first) - at);
    expand(text, captures, std::back_inserter(result));
    at = static_cast<std::size_t>(whole->second.second);
  }
  return result.append(text, at);
}

std::string with_line_feeds(std::string s) {
  for (std::size_t at; (at = s.find("\\n")) != std::string::npos;) s.replace(at, 2, "\n");
  return s;
}

TEST(oniguruma, replacements_as_the_file_says) {
  std::ifstream file(test_data("replacement_formats.txt"));
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('"')) continue;
    std::istringstream row(line);
    std::string field[4];
    for (auto& f : field) row >> std::quoted(f, '"', '\0');
    auto const result = replaced(unicode::to_utf16(field[0]),
                                 unicode::to_utf16(with_line_feeds(field[1])), field[2]);
    EXPECT_EQ(unicode::to_utf8(result), with_line_feeds(field[3])) << line;
    ++count;
  }
  EXPECT_GT(count, 30);
}

TEST(oniguruma, formats_of_any_size_and_units_beyond_bytes) {
  EXPECT_EQ(replaced(u"b", u"abc", "\\u\u00e9\\U\u00e9\u0447\u00df"),
            u"a\u00c9\u00c9\u0427\u00dfc");
  EXPECT_TRUE(oniguruma::format(repeated("(?1:", 1'000'000).c_str()).has_failed());
  EXPECT_EQ(replaced(u"b", u"abc", repeated("(?1:a:)", 100'000)), u"ac");
}

}  // namespace
