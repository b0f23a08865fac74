#include "documents/document_alerts.h"
#include "documents/document_fixture.h"
#include "documents/printable_name.h"
#include "path/other_user.h"
#include "platform/utf.h"

namespace {

TEST_F(document, ascii_becomes_the_default_without_a_question) {
  auto const d = document_of("caf");
  type(*d, u"\u00E9");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "caf\xC3\xA9");
  EXPECT_EQ(d->fileEncoding(), encoding::UTF8);
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, asks_when_the_charset_lacks_a_character) {
  struct {
    encoding::charset_t charset;
    char const* default_encoding;
    std::u16string typed;
    char const* asked;  // the charset's name, or null
  } const cases[] = {
      {encoding::Latin1, "utf-8", u"\u20AC", "Latin 1"},
      {encoding::Latin1, "utf-8", u"\u00FF", nullptr},
      {encoding::Latin1, "utf-8", u"\u0100", "Latin 1"},
      {encoding::MacRoman, "utf-8", u"\u20AC", nullptr},
      {encoding::MacRoman, "utf-8", u"\u4E00", "Mac Roman"},
      {encoding::CP1252, "utf-8", u"\u20AC", nullptr},
      {encoding::CP1252, "utf-8", u"\u0081", "Windows 1252"},
      {encoding::ASCII, "iso-8859-1", u"\u00E9", nullptr},
      {encoding::ASCII, "iso-8859-1", u"\u20AC", "Latin 1"},
      {encoding::ASCII, "nonsense", u"\u20AC", nullptr},
      {encoding::Latin1, "utf-8", u"\xD83D\xDE00", "Latin 1"},
      {encoding::UTF16LE, "utf-8", u"\xD83D\xDE00", nullptr},
  };
  for (auto const& c : cases) {
    defaults().set("WynDefaultFileEncoding", c.default_encoding);
    auto const d = document_of("");
    d->setFileEncoding(c.charset);
    d->setByteOrderMark(true);
    type(*d, c.typed);
    auto const memento = d->lastSavedMemento();
    SCOPED_TRACE(std::string(encoding::charset_name[c.charset]) + " " + c.default_encoding);
    if (!c.asked) {
      EXPECT_TRUE(save(d));
      EXPECT_EQ(alerts(), strings());
      continue;
    }
    answer("Encoding Error", "Cancel");
    EXPECT_FALSE(save(d));
    std::string const shown = documents::printable(unicode::to_utf8(c.typed));
    EXPECT_EQ(alerts(),
              strings{"Encoding Error|The document \u201Cfile\u201D cannot be saved using "
                      "the " +
                      std::string(c.asked) + " encoding, which has no \u201C" + shown +
                      "\u201D as in line 1. Would you like to save "
                      "it using UTF-8 instead?|Cancel"});
    EXPECT_EQ(on_disk(), "");
    EXPECT_EQ(d->fileEncoding(), c.charset);
    EXPECT_TRUE(d->byteOrderMark());
    EXPECT_TRUE(d->isDocumentEdited());
    EXPECT_EQ(d->lastSavedMemento(), memento);

    answer("Encoding Error", "Save as UTF-8");
    EXPECT_TRUE(save(d));
    EXPECT_EQ(d->fileEncoding(), encoding::UTF8);
    EXPECT_NE(on_disk().substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_EQ(text_of(*WynDocument::initWithContentsOfFile(folder / "file")), c.typed);
    EXPECT_FALSE(d->isDocumentEdited());
    EXPECT_EQ(alerts().size(), 1u);
  }
}

TEST_F(document, asks_before_half_of_a_character_reaches_a_file) {
  auto const d = document_of("");
  char16_t const halves[] = {u'a', u'\n', u'\xDE00', u'\xD83D', u'\n', u'\xD83D', u'\xDE00'};
  type(*d, std::u16string(halves, 7));
  EXPECT_FALSE(save(d));
  EXPECT_EQ(on_disk(), "");
  EXPECT_TRUE(d->isDocumentEdited());
  auto const asked = alerts();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_NE(asked.front().find("in line 2"), std::string::npos);
  answer("Encoding Error", "Save Anyway");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "a\n\xED\xB8\x80\xED\xA0\xBD\n\xF0\x9F\x98\x80");
}

TEST_F(document, asks_before_more_halves_of_characters_reach_a_file_than_it_held) {
  std::string const high = "\xED\xA0\xBD", low = "\xED\xB8\x80";
  struct {
    char const* name;
    std::string bytes;
    std::u16string typed;
    bool asks;
  } const cases[] = {
      {"none of them new", "a" + high + "\n", u"b", false},
      {"one more", "a" + high + "\n", u"\xD83D", true},
      {"another one", "a" + high + "\n", u"\xDE00", true},
      {"joined to a character", "a" + high, u"\xDE00", false},
      {"the file had no half", "\u00E9\n", u"\xD83D", true},
      {"the file had all of them", high + "\n" + low + low + "\n", u"\xD83D\xDE00", false},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    auto d = document_of(c.bytes);
    d->setFileEncoding(encoding::UTF8);
    type(*d, c.typed);
    EXPECT_EQ(save(d), !c.asks);
    EXPECT_EQ(alerts().size(), c.asks);
    EXPECT_EQ(on_disk() == c.bytes, c.asks);
    answer("Encoding Error", "Save Anyway");
    EXPECT_TRUE(save(d));
    alerts();
    // What has been confirmed is known, under this name and another one.
    type(*d, u"c");
    EXPECT_TRUE(d->writeToFile(folder / "copy"));
    d->setFilename(folder / "copy");
    type(*d, u"d");
    EXPECT_TRUE(save(d));
    EXPECT_EQ(alerts(), strings());
    type(*d, u"\n\xD83D");
    answer("Encoding Error", "Don't Save");
    EXPECT_FALSE(save(d));
    EXPECT_EQ(alerts().size(), 1u);
    d.reset();
    std::filesystem::remove(folder / "copy");
  }
  // In another charset a half is a half, which says nothing of UTF-8.
  auto const d = document_of(std::string("\xFF\xFE\x3D\xD8\n\0", 6));
  ASSERT_EQ(d->fileEncoding(), encoding::UTF16LE);
  d->setFileEncoding(encoding::UTF8);
  EXPECT_FALSE(save(d));
}

TEST_F(document, asks_before_it_loses_bytes) {
  std::string const bytes = "\xC0\xAF overlong";
  auto const d = document_of(bytes);
  EXPECT_FALSE(save(d));
  EXPECT_EQ(alerts(),
            strings{"Encoding Error|The file \u201Cfile\u201D holds bytes that are not "
                    "valid UTF-8 text. Saving would lose them. Would you like to overwrite "
                    "it?|Don't Overwrite"});
  EXPECT_EQ(on_disk(), bytes);
  EXPECT_TRUE(d->writeToFile(folder / "copy"));  // loses nothing
  EXPECT_FALSE(save(d));
  EXPECT_EQ(alerts().size(), 1u);
  answer("Encoding Error", "Overwrite");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "/ overlong");
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_TRUE(save(d));
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, asks_before_it_changes_what_is_no_text) {
  std::string const bytes("ELF\0\r\n\n", 7), damaged("ELF\0\n\n", 6);
  auto const d = document_of(bytes);
  EXPECT_FALSE(save(d));
  EXPECT_EQ(alerts(),
            strings{"Encoding Error|The file \u201Cfile\u201D does not seem to be text. Saving "
                    "would change bytes in it that look like line endings. Would you like to "
                    "overwrite it?|Don't Overwrite"});
  EXPECT_EQ(on_disk(), bytes);
  answer("Encoding Error", "Overwrite");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), damaged);
  alerts();

  EXPECT_TRUE(save(open(folder.write("for a terminal", "\x1B[1m\b\f\r\n\n\x1A"))));
  EXPECT_EQ(folder.read(folder / "for a terminal"), "\x1B[1m\b\f\n\n\x1A");
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, supplementary_characters_can_be_single_units) {
  defaults().set("WynPreserveSupplementaryCharacters", false);
  auto const d = document_of("\xF0\x9F\x98\x80");
  EXPECT_EQ(text_of(*d), u"\uF600");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "\xEF\x98\x80");
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, format_can_be_left_to_the_defaults) {
  defaults().set("WynFileEncodingAndLineEndingsPreserve", false);
  defaults().set("WynDefaultFileEncoding", "utf-16-be");
  defaults().set("WynDefaultLineEndings", "cr");
  auto const d = document_of("a\r\n\xE9");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), std::string("\xFE\xFF\0a\0\r\0\xE9", 8));
}

TEST_F(document, asks_before_it_overwrites_a_read_only_file) {
  for (bool atomically : {false, true}) {
    defaults().set("WynSaveAtomically", atomically);
    auto const d = document_of("old");
    ASSERT_EQ(chmod(d->filename().c_str(), 0440), 0);
    type(*d, u" and new");
    answer("Couldn't Save", "Don't Overwrite");
    EXPECT_FALSE(save(d));
    EXPECT_EQ(
        alerts(),
        strings{
            "Couldn't Save|The file \u201Cfile\u201D is read-only. Would you like to overwrite it?|"
            "Don't Overwrite"});
    EXPECT_EQ(on_disk(), "old");
    EXPECT_TRUE(d->isDocumentEdited());

    answer("Couldn't Save", "Overwrite");
    EXPECT_TRUE(save(d));
    EXPECT_EQ(on_disk(), "old and new");
    EXPECT_EQ(mode_of(d->filename()), 0440u);
    alerts();
    std::filesystem::remove(d->filename());
  }
}

TEST_F(document, saved_elsewhere_takes_its_attributes_along) {
  auto const d = document_of("#!/bin/sh");
  ASSERT_EQ(chmod(d->filename().c_str(), 0751), 0);
  if (geteuid() == 0) ASSERT_EQ(chown(d->filename().c_str(), 1234, 4321), 0);
  ASSERT_TRUE(d->writeToFile(folder / "copy"));
  struct stat const from = status_of(d->filename()), to = status_of(folder / "copy");
  EXPECT_EQ(to.st_mode, from.st_mode);
  EXPECT_EQ(to.st_uid, from.st_uid);
  EXPECT_EQ(to.st_gid, from.st_gid);
  EXPECT_EQ(d->filename(), folder / "file");
}

// Whatever has become of the file meanwhile, and wherever its text goes.
TEST_F(document, private_text_stays_private) {
  enum class meanwhile { nothing, deleted, replaced };
  enum class way { elsewhere, copy, back, elsewhere_and_back };
  for (bool const with_list : {false, true})
    for (auto const event : {meanwhile::nothing, meanwhile::deleted, meanwhile::replaced})
      for (auto const how : {way::elsewhere, way::copy, way::back, way::elsewhere_and_back}) {
        if (event == meanwhile::replaced && how == way::back) continue;  // it's the other's file
        std::string const path = folder / "private";
        std::string written = path;
        folder.write("private", "text");
        ASSERT_EQ(chmod(path.c_str(), 0600), 0);
        if (with_list && !give_access_list(path, 0)) continue;
        auto const d = WynDocument::initWithContentsOfFile(path);
        ASSERT_TRUE(d);
        if (event != meanwhile::nothing) std::filesystem::remove(path);
        if (event == meanwhile::replaced) folder.write("private", "of others");
        type(*d, u" more");
        if (how != way::back) written = folder / "new";
        EXPECT_TRUE(how == way::copy ? d->writeCopyToFile(written) : d->writeToFile(written));
        if (how == way::elsewhere_and_back) {
          d->setFilename(written);
          std::filesystem::remove(written);
          EXPECT_TRUE(d->writeToFile(written));
        }
        bool const is_old = how == way::back && event == meanwhile::nothing;
        EXPECT_EQ(status_of(written).st_mode & 0077, is_old && with_list ? 0060u : 0u)
            << with_list << static_cast<int>(event) << static_cast<int>(how);
        alerts();
        for (char const* name : {"private", "new"}) std::filesystem::remove(folder / name);
      }
}

TEST_F(document, copy_leaves_the_file_that_it_overwrites_to_its_owner) {
  if (geteuid() != 0) GTEST_SKIP() << "needs to be root";
  auto const d = document_of("text");
  ASSERT_EQ(chown(d->filename().c_str(), 1234, 4321), 0);
  std::string const other = folder.write("other", "old");
  ASSERT_EQ(chmod(other.c_str(), 0640), 0);
  ASSERT_TRUE(d->writeCopyToFile(other));
  EXPECT_EQ(status_of(other).st_uid, 0u);
  EXPECT_EQ(status_of(other).st_gid, 0u);
  EXPECT_EQ(mode_of(other), 0640u);
  EXPECT_EQ(folder.read(other), "text");
}

TEST_F(document, failed_saves_are_told_and_change_nothing) {
  std::filesystem::create_directory(folder / "gone");
  std::string const path = folder.write("gone/file", "old");
  auto const d = open(path);
  type(*d, u"\u00E9");
  auto const memento = d->lastSavedMemento();
  for (bool const is_folder : {true, false}) {
    std::filesystem::remove_all(is_folder ? path : folder / "gone");
    if (is_folder) std::filesystem::create_directory(path);
    EXPECT_FALSE(save(d));
    EXPECT_EQ(alerts(), strings{"Couldn't Save|The file \u201Cfile\u201D could not be saved. " +
                                (is_folder ? "It is a folder"
                                           : "The folder \u201C" + folder / "gone" +
                                                 "\u201D does not exist") +
                                ". Its text is still open here; it can be saved elsewhere with "
                                "Save As.|Continue"});
    EXPECT_TRUE(d->isDocumentEdited());
    EXPECT_FALSE(d->documentHasBeenSaved());
    EXPECT_EQ(d->lastSavedMemento(), memento);
    EXPECT_EQ(d->fileEncoding(), encoding::ASCII);
    EXPECT_EQ(text_of(*d), u"old\u00E9");
  }
  EXPECT_FALSE(d->writeToFile(""));
  EXPECT_EQ(alerts(), strings());
}

/// Without a window, which would have been told.
TEST_F(document, asks_before_it_overwrites_what_others_have_written) {
  struct {
    char const* name;
    void (*meddle)(std::string const& path);
    bool asked;
  } const cases[] = {
      {"appended", [](auto& p) { std::ofstream(p, std::ios::app) << "+"; }, true},
      {"cut", [](auto& p) { std::filesystem::resize_file(p, 1); }, true},
      {"replaced",
       [](auto& p) {
         struct stat old;
         ASSERT_EQ(stat(p.c_str(), &old), 0);
         std::filesystem::rename(p, p + ".moved");
         std::ofstream(p) << "their";
         timespec const times[2] = {old.st_atim, old.st_mtim};  // nothing but the inode tells
         ASSERT_EQ(utimensat(AT_FDCWD, p.c_str(), times, 0), 0);
       },
       true},
      {"given other permissions", [](auto& p) { ASSERT_EQ(chmod(p.c_str(), 0600), 0); }, false},
      {"removed", [](auto& p) { std::filesystem::remove(p); }, false},
  };
  for (bool const atomically : {false, true})
    for (auto const& c : cases) {
      SCOPED_TRACE(std::string(c.name) + (atomically ? ", atomically" : ""));
      defaults().set("WynSaveAtomically", atomically);
      for (char const* button : {"Cancel", "Revert", "Keep Quirnote Version"}) {
        auto const d = document_of("their");
        ASSERT_EQ(chmod(d->filename().c_str(), 0640), 0);
        type(*d, u" and ours");
        c.meddle(d->filename());
        std::string const theirs = c.asked ? on_disk() : "";
        answer("File Changed on Disk", button);
        bool const keeps = std::string(button)[0] == 'K' || !c.asked;
        EXPECT_EQ(save(d), keeps) << button;
        EXPECT_EQ(alerts().size(), c.asked ? 1u : 0u);
        EXPECT_EQ(on_disk(), keeps ? "their and ours" : theirs) << button;
        bool const reverts = c.asked && std::string(button) == "Revert";
        if (reverts) EXPECT_EQ(text_of(*d), std::u16string(theirs.begin(), theirs.end()));
        EXPECT_EQ(d->isDocumentEdited(), !keeps && !reverts);
        EXPECT_TRUE(save(d) || !keeps);  // what has been answered isn't asked again
        EXPECT_EQ(alerts().size(), keeps || reverts ? 0u : 1u);
        std::filesystem::remove(folder / "file");
        std::filesystem::remove(folder / "file.moved");
      }
    }
}

TEST_F(document, saves_through_no_link_that_was_not_there) {
  std::string const other = folder.write("other", "not ours");
  for (bool const atomically : {false, true})
    for (bool const of_folder : {false, true})
      for (bool const edited : {false, true}) {
        defaults().set("WynSaveAtomically", atomically);
        std::filesystem::create_directory(folder / "deep");
        std::filesystem::create_directory(folder / "trap");
        std::string const path = folder.write("deep/file", "old");
        folder.write("trap/file", "not ours");
        auto const d = open(path);
        if (edited) type(*d, u" and new");
        std::filesystem::remove_all(of_folder ? folder / "deep" : path);
        ASSERT_EQ(
            symlink(of_folder ? "trap" : "../other", (of_folder ? folder / "deep" : path).c_str()),
            0);
        answer("File Changed on Disk", "Keep Quirnote Version");
        d->checkForFilesystemChanges();
        if (!edited) type(*d, u" and new");
        EXPECT_FALSE(save(d));
        EXPECT_NE(alerts().back().find("by a link that was not there when it was opened"),
                  std::string::npos);
        EXPECT_EQ(folder.read(other), "not ours");
        EXPECT_EQ(folder.read(folder / "trap/file"), "not ours");
        std::filesystem::remove_all(folder / "deep");
        std::filesystem::remove_all(folder / "trap");
      }
  // One that was there is followed, and a folder that has been made anew is the same place.
  ASSERT_EQ(symlink("other", (folder / "link").c_str()), 0);
  auto const linked = open(folder / "link");
  type(*linked, u"!");
  EXPECT_TRUE(save(linked));
  EXPECT_EQ(folder.read(other), "not ours!");
  std::filesystem::create_directory(folder / "deep");
  auto const d = open(folder.write("deep/file", "old"));
  std::filesystem::remove_all(folder / "deep");
  std::filesystem::create_directory(folder / "deep");
  type(*d, u" and new");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(folder.read(folder / "deep/file"), "old and new");
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, asks_root_too_before_capabilities_go) {
  auto const d = document_of("old");
  if (geteuid() != 0 || !give_capability(d->filename())) GTEST_SKIP() << "not root";
  type(*d, u"!");
  EXPECT_FALSE(save(d));
  EXPECT_NE(alerts().at(0).find("its capabilities"), std::string::npos);
  EXPECT_EQ(on_disk(), "old");
}

TEST_F(document, half_written_file_is_a_critical_alert) {
  path::write_error const error{path::make_file_error("write", "/x/file", EIO), true};
  documents::tell_could_not_save(error, "/x/file");
  EXPECT_EQ(alerts(), strings{"Couldn't Save|The file \u201Cfile\u201D could not be saved. "
                              "Input/output error. The file on disk is incomplete. The full text "
                              "is still open here, unsaved.|Continue"});
}

}  // namespace
