#include <rapidcheck/gtest.h>

#include "data_rows.h"
#include "documents/document_fixture.h"
#include "documents/plain_conversion.h"
#include "encoding/estimate.h"

// What is loaded and saved without an edit comes back byte for byte, or the user is asked.

namespace {

struct file_case {
  char const* name;
  std::string bytes;
  encoding::charset_t charset;
  line_ending::type line_ending;
  bool byte_order_mark;
  std::u16string text;
};

std::string with_zeros(char const* text, std::size_t size) {
  return std::string(text, size);
}

TEST_F(document, comes_back_byte_for_byte) {
  using namespace encoding;
  file_case const cases[] = {
      {"empty", "", ASCII, line_ending::LF, false, u""},
      {"lf", "a\nb\n", ASCII, line_ending::LF, false, u"a\nb\n"},
      {"cr", "a\rb", ASCII, line_ending::CR, false, u"a\nb"},
      {"crlf", "a\r\n\r\nb", ASCII, line_ending::CRLF, false, u"a\n\nb"},
      {"only lf", "\n", ASCII, line_ending::LF, false, u"\n"},
      {"nul", with_zeros("a\0b", 3), ASCII, line_ending::LF, false, {u"a\0b", 3}},
      {"utf-8", "\xC3\xA9\xE2\x82\xAC\r\n", UTF8, line_ending::CRLF, false, u"\u00E9\u20AC\n"},
      {"mark", "\xEF\xBB\xBF", UTF8, line_ending::LF, true, u""},
      {"mark and text", "\xEF\xBB\xBF\xC3\xA9\r", UTF8, line_ending::CR, true, u"\u00E9\n"},
      {"two marks", "\xEF\xBB\xBF\xEF\xBB\xBF", UTF8, line_ending::LF, true, u"\uFEFF"},
      {"supplementary", "\xF0\x9F\x98\x80", UTF8, line_ending::LF, false, u"\xD83D\xDE00"},
      {"lone surrogate", "x\xED\xA0\x80", UTF8, line_ending::LF, false, u"x\xD800"},
      {"utf-16 be", with_zeros("\xFE\xFF\0a\0\r\0\n\xD8\x3D\xDE", 11) + '\0', UTF16BE,
       line_ending::CRLF, false, u"a\n\xD83D\xDE00"},
      {"utf-16 le",
       with_zeros("\xFF\xFE"
                  "a\0\r\0\x3D\xD8",
                  8),
       UTF16LE, line_ending::CR, false, u"a\n\xD83D"},
      {"latin 1", "\xE9\xFF\r\n", Latin1, line_ending::CRLF, false, u"\u00E9\u00FF\n"},
      {"mac roman", "\x8E\xDB\r", MacRoman, line_ending::CR, false, u"\u00E9\u20AC\n"},
      {"cut mark", "\xEF\xBB", Latin1, line_ending::LF, false, u"\u00EF\u00BB"},
      {"odd utf-16",
       "\xFF\xFE"
       "a",
       Latin1, line_ending::LF, false,
       u"\u00FF\u00FE"
       u"a"},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    auto const d = document_of(c.bytes);
    EXPECT_EQ(text_of(*d), c.text);
    EXPECT_EQ(d->length(), c.text.size());
    EXPECT_EQ(d->fileEncoding(), c.charset);
    EXPECT_EQ(d->lineEnding(), c.line_ending);
    EXPECT_EQ(d->byteOrderMark(), c.byte_order_mark);
    EXPECT_TRUE(save(d));
    EXPECT_EQ(on_disk(), c.bytes);
    EXPECT_EQ(alerts(), std::vector<std::string>());
  }
}

/// Mostly UTF-8, with a piece now and then that it doesn't have, or another charset doesn't.
std::string interesting_bytes() {
  static data_row const common = fields_of(
      R"(a "\r\n" "\xC3\xA9" "\xE2\x82\xAC" "\xF0\x9F\x98\x80" "\xED\xA0\xBD" "\xEF\xBB\xBF" "\x00")");
  static data_row const rare = fields_of(
      R"("\xED\xA0\xBD\xED\xB8\x80" "\xC0\x80" "\xF8\x88\x80\x80\x80" "\xF4\x90\x80\x80" "\x80" "\xE9")"
      R"( "\xFF" "\xFE\xFF" "\xFF\xFE" "\xE2\x82" "\xF0\x80\x80\x80" "\xED\xB8\x80")");
  std::string bytes;
  int const count = *rc::gen::inRange(0, 80);
  for (int i = 0; i < count; ++i)
    bytes +=
        *rc::gen::inRange(0, 60) == 0 ? *rc::gen::elementOf(rare) : *rc::gen::elementOf(common);
  return bytes;
}

RC_GTEST_FIXTURE_PROP(document, comes_back_or_asks, ()) {
  std::string const bytes = interesting_bytes();
  // Line ends that are cut up by UTF-16 can be mixed, and mixed ones don't come back.
  RC_PRE(encoding::estimate(bytes.begin(), bytes.end()) < encoding::UTF16BE ||
         encoding::estimate(bytes.begin(), bytes.end()) > encoding::UTF16LE);
  auto const d = document_of(bytes);
  bool const saved = save(d);
  RC_CLASSIFY(!saved, "asked");
  RC_CLASSIFY(d->fileEncoding() == encoding::UTF8, "UTF-8");
  RC_ASSERT(saved == come_back_plainly(bytes, encoding::estimate(bytes.begin(), bytes.end())));
  RC_ASSERT(alerts().size() == (saved ? 0u : 1u));
  RC_ASSERT(on_disk() == bytes);
}

}  // namespace
