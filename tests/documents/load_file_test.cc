#include "documents/load_file.h"

#include "documents/document_fixture.h"

namespace {

using namespace std::string_literals;

class load_file : public document {
 protected:
  std::u16string load(std::string const& path, bool with_header = false) {
    std::vector<char16_t> out;
    EXPECT_TRUE(documents::load_file(path, out, with_header));
    return {out.begin(), out.end()};
  }
};

TEST_F(load_file, decodes_and_normalises_line_ends) {
  EXPECT_EQ(load(folder.write("empty", "")), u"");
  EXPECT_EQ(load(folder.write("a", "\xEF\xBB\xBF\xC3\xA9\r\nb")), u"\u00E9\nb");
  // As bytes, even in UTF-16, where CR and LF may then be the halves of one unit.
  EXPECT_EQ(load(folder.write("le", "\xFF\xFE+\0\r\0\n\0b\0"s)), u"+\n\nb");
  EXPECT_EQ(load(folder.write("be", "\xFE\xFF\r\n")), u"\u00FE\u00FF\n");
}

TEST_F(load_file, keeps_supplementary_characters) {
  std::string const path = folder.write("a", "\xF0\x9F\x98\x80");
  EXPECT_EQ(load(path), u"\xD83D\xDE00");
  defaults().set("WynPreserveSupplementaryCharacters", false);
  EXPECT_EQ(load(path), u"\xF600");
}

TEST_F(load_file, writes_a_header) {
  std::string const path = folder.write("caf\xC3\xA9 \xF0\x9F\x98\x80", "\x8E\r\n");
  std::u16string const rule(60, u'='), in(folder.path().begin(), folder.path().end());
  EXPECT_EQ(load(path, true), rule + u"\n   Filename:     " + in + u"/caf\u00E9 \xD83D\xDE00" +
                                  u"\n   Encoding:     MacRoman\n   Line endings: LF + CR\n" +
                                  rule + u"\n\u00E9\n");
}

TEST_F(load_file, what_cannot_be_read_changes_nothing) {
  std::string const pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::vector<char16_t> out = {u'x'};
  for (auto const& path : {folder / "missing", folder.path(), pipe, "/dev/zero"s})
    EXPECT_FALSE(documents::load_file(path, out, true)) << path;
  EXPECT_EQ(out, std::vector<char16_t>{u'x'});
}

}  // namespace
