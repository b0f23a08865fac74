#include "regex/traits.h"

#include <clocale>

#include "platform/own_defaults.h"
#include "regex/find.h"
#include "test.h"

namespace {

using wide = regex::traits<char16_t>;
using narrow = regex::traits<char>;

TEST(traits, ascii_is_the_c_locale_s_whatever_the_process_has) {
  // Character functions of the library answer by the locale; the comparison needs the plain one.
  std::setlocale(LC_ALL, "C");
  for (int c = 0; c < 128; ++c) {
    auto const u = static_cast<char16_t>(c);
    EXPECT_EQ(wide::is_lower(u), std::islower(c) != 0) << c;
    EXPECT_EQ(wide::is_upper(u), std::isupper(c) != 0) << c;
    EXPECT_EQ(wide::is_alpha(u), std::isalpha(c) != 0) << c;
    EXPECT_EQ(wide::is_digit(u), std::isdigit(c) != 0) << c;
    EXPECT_EQ(wide::is_alnum(u), std::isalnum(c) != 0) << c;
    EXPECT_EQ(wide::is_xdigit(u), std::isxdigit(c) != 0) << c;
    EXPECT_EQ(wide::is_blank(u), std::isblank(c) != 0) << c;
    EXPECT_EQ(wide::is_space(u), std::isspace(c) != 0 && c != '\n') << c;
    EXPECT_EQ(wide::is_word(u), std::isalnum(c) != 0 || c == '_') << c;
    EXPECT_EQ(wide::to_lower(u), std::tolower(c)) << c;
    EXPECT_EQ(wide::to_upper(u), std::toupper(c)) << c;
    EXPECT_EQ(narrow::is_word(static_cast<char>(c)), wide::is_word(u)) << c;
    EXPECT_EQ(narrow::to_upper(static_cast<char>(c)), std::toupper(c)) << c;
  }
}

TEST(traits, beyond_ascii_by_unicode) {
  EXPECT_TRUE(wide::is_lower(u'\u00df'));
  EXPECT_TRUE(wide::is_upper(u'\u0416'));
  EXPECT_TRUE(wide::is_alpha(u'\u4e2d'));
  EXPECT_TRUE(wide::is_digit(u'\u0663'));
  EXPECT_TRUE(wide::is_word(u'\u0663'));
  EXPECT_TRUE(wide::is_space(u'\u00a0'));
  EXPECT_TRUE(wide::is_blank(u'\u2003'));
  EXPECT_FALSE(wide::is_word(u'\u2026'));
  EXPECT_FALSE(wide::is_xdigit(u'\uff21'));
  EXPECT_FALSE(wide::is_word(0xd800));
  EXPECT_EQ(wide::to_lower(u'\u0416'), u'\u0436');
  EXPECT_EQ(wide::to_upper(u'\u00ff'), u'\u0178');
  EXPECT_EQ(wide::to_upper(u'\u00df'), u'\u00df');  // two letters in upper case
  EXPECT_EQ(wide::to_lower(u'\u0130'), u'\u0130');  // two units in lower case
  EXPECT_TRUE(wide::equal_nocase(u'\u03a3', u'\u03c3'));
  EXPECT_FALSE(wide::equal_nocase(u'\u03a3', u'\u03c4'));
}

TEST(traits, bytes_beyond_ascii_have_no_class_and_no_case) {
  for (int b = 128; b < 256; ++b) {
    char const c = static_cast<char>(b);
    EXPECT_FALSE(narrow::is_word(c) || narrow::is_space(c) || narrow::is_upper(c)) << b;
    EXPECT_EQ(narrow::to_lower(c), c);
    EXPECT_EQ(narrow::to_upper(c), c);
  }
}

TEST(word_characters, follow_the_user_defaults) {
  auto& defaults = platform::user_defaults::standard();
  regex::nfa<char> const word("\\<[\\w]+\\>");
  std::u16string const text = u"  foo-b\u2026r_c";
  auto const length = [&] {
    auto const m = regex::find(text.begin(), text.end(), word);
    return m ? m.end() - m.begin() : -1;
  };
  EXPECT_EQ(length(), 3);
  EXPECT_TRUE(wide::is_word(u'_'));

  defaults.set("WynWordCharacters", "-\u2026");
  EXPECT_EQ(length(), 7);
  EXPECT_TRUE(wide::is_word(u'-'));
  EXPECT_FALSE(wide::is_word(u'_'));
  EXPECT_TRUE(narrow::is_word('-'));

  defaults.set("WynWordCharacters", "");
  EXPECT_EQ(length(), 3);
  EXPECT_FALSE(wide::is_word(u'_'));

  defaults.remove("WynWordCharacters");
  EXPECT_TRUE(wide::is_word(u'_'));
  EXPECT_FALSE(wide::is_word(u'-'));
}

/// No test may read or write the settings of who runs it.
own_defaults const settings;

}  // namespace
