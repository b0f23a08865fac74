#include "documents/document_fixture.h"
#include "path/other_user.h"

namespace {

TEST_F(document, opens_no_file_that_cannot_be_read) {
  std::filesystem::create_directory(folder / "folder");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  folder.write("plain", "");
  ASSERT_EQ(symlink("loop", (folder / "loop").c_str()), 0);
  struct {
    char const *name, *shown, *cause;
    int code;
  } const cases[] = {
      {"folder", "folder", "It is a folder", EISDIR},
      {"pipe", "pipe", "It is a named pipe", EINVAL},
      {"plain/x", "x", "Not a directory", ENOTDIR},
      {"loop", "loop", "Too many levels of symbolic links", ELOOP},
  };
  for (auto const& c : cases) {
    path::file_error reason;
    EXPECT_FALSE(WynDocument::documentWithContentsOfFile(folder / c.name, &reason)) << c.name;
    EXPECT_EQ(reason.code, c.code) << c.name;
    EXPECT_EQ(alerts(), strings{"Couldn't Open|The file \u201C" + std::string(c.shown) +
                                "\u201D could not be read. " + c.cause + ".|Continue"});
  }
}

TEST_F(document, opens_no_file_without_the_right_to_read) {
  std::string const path = folder.write("secret", "text");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
  other_user const user;
  EXPECT_FALSE(open(path));
  EXPECT_EQ(alerts(), strings{"Couldn't Open|The file \u201Csecret\u201D could not be read. "
                              "Permission denied.|Continue"});
}

TEST_F(document, of_a_file_that_does_not_exist_is_empty) {
  auto const d = open(folder / "missing");
  ASSERT_TRUE(d);
  EXPECT_EQ(d->filename(), folder / "missing");
  EXPECT_EQ(d->length(), 0u);
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_FALSE(d->fileModificationDate());
  EXPECT_EQ(alerts(), strings());
  type(*d, u"x");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(folder.read(folder / "missing"), "x");
}

TEST_F(document, reads_what_the_kernel_makes_up) {
  auto const d = open("/proc/self/status");
  ASSERT_TRUE(d);
  EXPECT_NE(text_of(*d).find(u"Pid:"), std::u16string::npos);
}

TEST_F(document, too_large_is_refused_by_name) {
  std::string const path = folder.write("large", "");
  if (truncate(path.c_str(), off_t{1} << 31) != 0) GTEST_SKIP() << "no sparse files here";
  path::file_error reason;
  EXPECT_FALSE(WynDocument::documentWithContentsOfFile(path, &reason));
  EXPECT_EQ(reason.code, EFBIG);
  EXPECT_EQ(alerts(), strings{"Couldn't Open|The file \u201Clarge\u201D could not be read. It has "
                              "2.0 GiB, and a text can have 2 GiB at most.|Continue"});
}

TEST_F(document, has_a_name_that_can_be_shown) {
  struct {
    std::string name, shown;
  } const cases[] = {
      {"a b\n\x7F.txt", "a b\u240A\u2421.txt"},
      {"bad\xFFutf", "bad\uFFFDutf"},
      {"cut\xE2\x82", "cut\uFFFD"},
      {"\xF0\x9F\x98\x80 \xED\xA0\x80", "\xF0\x9F\x98\x80 \uFFFD"},
      {"\u0085 \u2028", "\uFFFD \uFFFD"},
      {"\u202Etxt.exe \u2066 \u200F \u061C", "\uFFFDtxt.exe \uFFFD \uFFFD \uFFFD"},
  };
  for (auto const& c : cases) {
    auto const d = open(folder.write(c.name, "x"));
    ASSERT_TRUE(d);
    EXPECT_EQ(d->displayName(), c.shown);
    type(*d, u"y");
    EXPECT_TRUE(save(d));
    EXPECT_EQ(folder.read(folder / c.name), "xy");
  }
}

TEST_F(document, reopens_in_another_charset) {
  auto const d = document_of("\xC3\xA9\r\n");
  type(*d, u"unsaved");
  EXPECT_TRUE(d->reopenWithEncoding(encoding::MacRoman));
  EXPECT_EQ(text_of(*d), u"\u221A\u00A9\n");
  EXPECT_EQ(d->fileEncoding(), encoding::MacRoman);
  EXPECT_EQ(d->lineEnding(), line_ending::CRLF);
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "\xC3\xA9\r\n");

  d->storage().undo_manager.undo();
  EXPECT_EQ(text_of(*d), u"\u00E9\nunsaved");
  EXPECT_TRUE(d->isDocumentEdited());
}

TEST_F(document, reopened_in_a_wrong_charset_keeps_its_file) {
  std::string const bytes = "\xE9t\xE9";
  auto const d = document_of(bytes);
  EXPECT_TRUE(d->reopenWithEncoding(encoding::UTF8));
  EXPECT_EQ(text_of(*d), u"\uFFFDt\uFFFD");
  EXPECT_FALSE(save(d));
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_TRUE(d->reopenWithEncoding(encoding::Latin1));
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), bytes);
  EXPECT_EQ(alerts(), strings());

  std::filesystem::remove(d->filename());
  EXPECT_FALSE(d->reopenWithEncoding(encoding::UTF8));
  EXPECT_EQ(text_of(*d), u"\u00E9t\u00E9");
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_TRUE(WynDocument::document()->reopenWithEncoding(encoding::UTF8));
}

}  // namespace
