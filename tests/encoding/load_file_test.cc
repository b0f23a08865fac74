#include "encoding/load_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

class LoadFile : public testing::Test {
 protected:
  LoadFile() {
    char name[] = "/tmp/load_file_XXXXXX";
    folder_ = ::mkdtemp(name);
  }
  ~LoadFile() override { std::filesystem::remove_all(folder_); }

  std::string write(std::string const& name, std::string const& content) {
    std::ofstream(folder_ + "/" + name, std::ios::binary) << content;
    return folder_ + "/" + name;
  }

  std::u16string load(std::string const& path, bool with_header = false) {
    std::vector<char16_t> out;
    EXPECT_TRUE(encoding::load_file(path, out, with_header));
    return {out.begin(), out.end()};
  }

  std::string folder_;
};

TEST_F(LoadFile, DecodesAndNormalisesLineEnds) {
  EXPECT_EQ(load(write("empty", "")), u"");
  EXPECT_EQ(load(write("a",
                       "\xEF\xBB\xBF"
                       "caf\xC3\xA9\r\nb")),
            u"caf\u00E9\nb");
  EXPECT_EQ(load(write("big", std::string(300000, 'x'))), std::u16string(300000, u'x'));
}

TEST_F(LoadFile, LineEndsAreNormalisedAsBytesEvenInUtf16) {
  using namespace std::string_literals;
  EXPECT_EQ(load(write("le",
                       "\xFF\xFE"
                       "a\0\r\0\n\0b\0"s)),
            u"a\n\nb");
  // CR LF as the two halves of U+0D0A: the length becomes odd, so this is UTF-16 no more.
  EXPECT_EQ(load(write("be", "\xFE\xFF\r\n"s)), u"\u00FE\u00FF\n");
}

TEST_F(LoadFile, Header) {
  std::string const path = write("caf\xC3\xA9", "\x8E\r\n");
  std::u16string const rule(60, u'=');
  std::u16string folder(folder_.begin(), folder_.end());
  EXPECT_EQ(load(path, true), rule + u"\n   Filename:     " + folder + u"/caf\u00E9" +
                                  u"\n   Encoding:     MacRoman\n   Line endings: LF + CR\n" +
                                  rule + u"\n" + u"\u00E9\n");
}

TEST_F(LoadFile, WhatCanNotBeReadChangesNothing) {
  std::string const pipe = folder_ + "/pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  std::vector<char16_t> out = {u'x'};
  for (auto const& path : {folder_ + "/missing", folder_, pipe, std::string("/dev/zero")}) {
    EXPECT_FALSE(encoding::load_file(path, out, true)) << path;
  }
  EXPECT_EQ(out, std::vector<char16_t>{u'x'});
}

}  // namespace
