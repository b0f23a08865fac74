#include "encoding/library_charset.h"

#include <iconv.h>

#include "agreement.h"

namespace {

using encoding::charset_t;

std::string as_utf8(std::string const& bytes, char const* charset) {
  iconv_t const with = iconv_open("UTF-8", charset);
  EXPECT_NE(with, iconv_t(-1)) << charset;
  std::string result(4 * bytes.size() + 8, '\0'), given = bytes;
  char *in = given.data(), *out = result.data();
  std::size_t left = given.size(), room = result.size();
  bool const good = iconv(with, &in, &left, &out, &room) == 0;
  iconv_close(with);
  result.resize(good ? static_cast<std::size_t>(out - result.data()) : 0);
  return result;
}

std::string utf8_of(agreement::units const& units) {
  std::string result;
  encoding::stream_encoder encoder({encoding::UTF8, line_ending::LF, false, true},
                                   [&](unsigned char const* bytes, std::size_t size) {
                                     result.append(reinterpret_cast<char const*>(bytes), size);
                                     return true;
                                   });
  encoder.put(units.data(), units.data() + units.size());
  encoder.finish();
  return result;
}

/// All texts of one and two bytes, and some of more.
std::vector<std::string> short_texts() {
  std::vector<std::string> texts;
  for (int first = 0; first < 256; ++first) {
    texts.push_back({char(first)});
    for (int second = 0; first >= 0x80 && second < 256; ++second)
      texts.push_back({char(first), char(second)});
  }
  std::mt19937 random(7);
  for (int n = 0; n < 3000; ++n) {
    texts.push_back({char(0x8F), char(0xA1 + random() % 94), char(0xA1 + random() % 94)});
    texts.push_back({char(0x81 + random() % 126), char(0x30 + random() % 10),
                     char(0x81 + random() % 126), char(0x30 + random() % 10)});
  }
  return texts;
}

// Two libraries differ in some signs, and in what they take for bytes of their makers' own; the
// texts that both know and see as different characters are counted.
TEST(library_charsets, agree_with_another_library) {
  struct row {
    charset_t charset;
    char const* name;
    int differences;
  };
  using namespace encoding;
  auto const texts = short_texts();
  for (row const& of : {row{GB18030, "GB18030", 60},
                        row{ShiftJIS, "CP932", 0},
                        row{EUCJP, "EUC-JP", 6},
                        row{EUCKR, "CP949", 0},
                        row{Big5, "CP950", 0},
                        row{KOI8R, "KOI8-R", 0},
                        row{CP1250, "CP1250", 0},
                        row{CP1251, "CP1251", 0},
                        row{CP1253, "CP1253", 0},
                        row{CP1254, "CP1254", 0},
                        row{CP1255, "CP1255", 0},
                        row{CP1256, "CP1256", 0},
                        row{CP1257, "CP1257", 0},
                        row{ISO8859_2, "ISO-8859-2", 0},
                        row{ISO8859_3, "ISO-8859-3", 0},
                        row{ISO8859_4, "ISO-8859-4", 0},
                        row{ISO8859_5, "ISO-8859-5", 0},
                        row{ISO8859_6, "ISO-8859-6", 0},
                        row{ISO8859_7, "ISO-8859-7", 0},
                        row{ISO8859_8, "ISO-8859-8", 0},
                        row{ISO8859_9, "ISO-8859-9", 0},
                        row{ISO8859_10, "ISO-8859-10", 0},
                        row{ISO8859_11, "ISO-8859-11", 0},
                        row{ISO8859_13, "ISO-8859-13", 0},
                        row{ISO8859_14, "ISO-8859-14", 0},
                        row{ISO8859_15, "ISO-8859-15", 0}}) {
    int differences = 0, known = 0;
    std::string first;
    for (std::string const& text : texts) {
      // The other one joins letters of one byte with their marks.
      if (of.charset >= KOI8R && text.size() > 1) continue;
      auto const ours = agreement::decode_fast({text.begin(), text.end()}, of.charset, true);
      std::string const theirs = as_utf8(text, of.name);
      if (text.size() == 1 && text[0] >= 0) EXPECT_EQ(utf8_of(ours.content), text) << of.name;
      if (!ours.exact || theirs.empty()) continue;
      ++known;
      if (utf8_of(ours.content) == theirs) continue;
      if (differences++ == 0) first = agreement::dump(agreement::bytes(text.begin(), text.end()));
    }
    EXPECT_LE(differences, of.differences) << of.name << " " << first;
    EXPECT_GE(known, 170) << of.name;
  }
}

TEST(library_charsets, give_the_bytes_back_or_say_that_they_are_lost) {
  std::mt19937 random(11);
  for (int n = 0; n < 300; ++n) {
    agreement::bytes in;
    bool const is_long = n % 50 == 0;  // beyond one piece
    for (std::size_t size = is_long ? 40000 : random() % 40; in.size() < size;)
      in.push_back(random() % 3 == 0 ? 'a' + random() % 26 : random() % 256);
    ASSERT_EQ(agreement::in_library(in, is_long ? 5000 : 1 + random() % 7), "");
  }
}

TEST(library_charsets, write_line_ends_and_marks) {
  auto const units = [](std::u16string_view from) {
    return agreement::units(from.begin(), from.end());
  };
  agreement::units const text = units(u"a\n\u4E2D\U00020000\n");
  auto const bytes = [](std::string_view from) {
    return agreement::bytes(from.begin(), from.end());
  };
  using namespace std::string_view_literals;
  EXPECT_EQ(agreement::encode_fast(text, {encoding::GB18030, line_ending::CRLF}, 1),
            bytes("a\r\n\xD6\xD0\x95\x32\x82\x36\r\n"));
  EXPECT_EQ(agreement::encode_fast(text, {encoding::UTF32LE, line_ending::CR}, 4),
            bytes("\xFF\xFE\0\0a\0\0\0\r\0\0\0\x2D\x4E\0\0\0\0\2\0\r\0\0\0"sv));
  auto const again =
      agreement::decode_fast(bytes("\0\0\xFE\xFF\0\0\0a"sv), encoding::UTF32BE, true);
  EXPECT_TRUE(again.has_bom && again.exact);
  EXPECT_EQ(again.content, units(u"a"));
}

}  // namespace
