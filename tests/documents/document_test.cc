#include "documents/WynDocument.h"

#include "documents/WynDocumentCache.h"
#include "documents/document_fixture.h"
#include "platform/notification_center.h"

namespace {

TEST_F(document, is_edited_when_its_text_is_not_the_saved_one) {
  auto const untitled = WynDocument::document();
  type(*untitled, u"x");
  EXPECT_TRUE(untitled->isDocumentEdited());
  untitled->storage().clear();
  EXPECT_FALSE(untitled->isDocumentEdited());

  auto const d = document_of("text");
  auto& undo_manager = d->storage().undo_manager;
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_FALSE(undo_manager.can_undo());
  type(*d, u"x");
  EXPECT_TRUE(d->isDocumentEdited());
  undo_manager.undo();
  EXPECT_FALSE(d->isDocumentEdited());
  undo_manager.redo();
  EXPECT_TRUE(save(d));
  EXPECT_FALSE(d->isDocumentEdited());
  undo_manager.undo();
  EXPECT_TRUE(d->isDocumentEdited());
  EXPECT_EQ(text_of(*d), u"text");
  d->storage().clear();
  EXPECT_TRUE(d->isDocumentEdited());
}

TEST_F(document, is_edited_when_it_would_be_written_in_another_way) {
  auto const untitled = WynDocument::document();
  untitled->setLineEnding(line_ending::CR);
  EXPECT_FALSE(untitled->isDocumentEdited());

  auto const d = document_of("text\n");
  d->setLineEnding(line_ending::CRLF);
  EXPECT_TRUE(d->isDocumentEdited());
  d->setLineEnding(line_ending::LF);
  EXPECT_FALSE(d->isDocumentEdited());
  d->setFileEncoding(encoding::UTF16LE);
  folder.write("file", "text\n");
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_TRUE(d->isDocumentEdited());
  EXPECT_TRUE(save(d));
  EXPECT_FALSE(d->isDocumentEdited());
  d->setFileEncoding(encoding::UTF8);
  d->setByteOrderMark(true);
  EXPECT_TRUE(d->reopenWithEncoding(encoding::UTF16LE));
  EXPECT_FALSE(d->isDocumentEdited());
}

TEST_F(document, numbers_those_without_a_name) {
  auto one = WynDocument::document();
  auto two = WynDocument::document();
  EXPECT_EQ(one->displayName(), "untitled");
  EXPECT_EQ(two->displayName(), "untitled 2");
  one->setFilename(folder / "one");
  EXPECT_EQ(one->displayName(), "one");
  EXPECT_EQ(WynDocument::document()->displayName(), "untitled 3");
  two->setFilename(folder / "two");
  EXPECT_EQ(WynDocument::document()->displayName(), "untitled");
  two->setFilename("");
  EXPECT_EQ(two->displayName(), "untitled");
}

TEST_F(document, is_shared_by_path) {
  folder.write("file", "text");
  std::filesystem::create_directory(folder / "sub");
  auto const d = open(folder / "file");
  EXPECT_EQ(open(folder / "sub/..//file/"), d);
  EXPECT_NE(WynDocument::initWithContentsOfFile(folder / "file"), d);
  EXPECT_EQ(open(folder / "file"), d);

  d->setFilename(folder / "renamed");
  EXPECT_EQ(open(folder / "renamed"), d);
  auto const other = open(folder / "file");
  EXPECT_NE(other, d);

  d->openDocument();
  d->openDocument();
  d->closeDocument();
  EXPECT_EQ(open(folder / "renamed"), d);
  d->closeDocument();
  EXPECT_FALSE(WynDocumentCache::instance().documentForPath(folder / "renamed"));
}

TEST_F(document, leaves_the_cache_when_it_goes) {
  std::string const path = folder.write("file", "text");
  auto first = open(path);
  WynDocument::initWithContentsOfFile(path);  // another one of that name, gone at once
  EXPECT_EQ(open(path), first);
  first.reset();
  EXPECT_FALSE(WynDocumentCache::instance().documentForPath(path));
}

TEST_F(document, tells_its_observers) {
  auto const d = document_of("text");
  strings told;
  auto& center = platform::notification_center::standard();
  auto const names = center.observe(
      WynDocument::filenameDidChange,
      [&](auto const& n) {
        told.push_back(n.info["old"].string_or("-") + " > " + n.info["new"].string_or("-"));
      },
      d.get());
  auto const edits = center.observe(
      WynDocument::documentEditedDidChange,
      [&](auto const&) { told.push_back(d->isDocumentEdited() ? "edited" : "saved"); }, d.get());
  type(*d, u"x");
  type(*d, u"y");
  EXPECT_TRUE(save(d));
  d->setFilename(folder / "other");
  d->setFilename("");
  std::string const file = folder / "file", other = folder / "other";
  EXPECT_EQ(told, (strings{"edited", "saved", file + " > " + file, file + " > " + other,
                           other + " > -"}));
}

TEST_F(document, hands_released_views_out_again) {
  auto const d = document_of("one\ntwo\nthree");
  d->setAuxiliaryFileInfo({{"line", 3}});
  text::view* const a = d->obtainView();
  EXPECT_EQ(a->selection.current_mark.base.pos(), (text::pos{2, 0}));
  d->setAuxiliaryFileInfo({{"line", 99}});
  text::view* const b = d->obtainView();
  EXPECT_NE(a, b);
  EXPECT_EQ(b->selection.current_mark.base.line, 2u);
  d->setAuxiliaryFileInfo({{"line", 1}});
  a->selection.set_caret(a->in_view(d->storage().begin_of_line(1)));
  d->releaseView(a);
  d->releaseView(b);
  EXPECT_EQ(d->obtainView(), b);
  EXPECT_EQ(d->obtainView(), a);
  EXPECT_EQ(a->selection.current_mark.base.line, 1u);
  d->setFilename(folder / "other");
  EXPECT_TRUE(d->auxiliaryFileInfo().empty());
}

// --- changes from outside ---

void set_date(std::string const& path, time_t seconds) {
  timespec const times[2] = {{seconds, 0}, {seconds, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
}

TEST_F(document, takes_over_changes_from_outside) {
  auto const d = document_of("old\n");
  EXPECT_FALSE(d->checkForFilesystemChanges());
  folder.write("file", "\xEF\xBB\xBFn\xC3\xA9w\r\n");
  EXPECT_TRUE(d->checkForFilesystemChanges());
  EXPECT_EQ(text_of(*d), u"n\u00E9w\n");
  EXPECT_EQ(d->fileEncoding(), encoding::UTF8);
  EXPECT_EQ(d->lineEnding(), line_ending::CRLF);
  EXPECT_TRUE(d->byteOrderMark());
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_FALSE(d->checkForFilesystemChanges());
  d->storage().undo_manager.undo();
  EXPECT_EQ(text_of(*d), u"old\n");
  EXPECT_TRUE(d->isDocumentEdited());

  defaults().set("WynFileEncodingAndLineEndingsPreserve", false);
  answer("File Changed on Disk", "Revert");
  folder.write("file", "\xE9\r");
  EXPECT_TRUE(d->checkForFilesystemChanges());
  EXPECT_EQ(text_of(*d), u"\u00E9\n");
  EXPECT_EQ(d->fileEncoding(), encoding::UTF8);  // the one before, as is the mark
  EXPECT_EQ(d->lineEnding(), line_ending::CRLF);
  EXPECT_TRUE(d->byteOrderMark());
}

TEST_F(document, lets_the_user_choose_between_two_changes) {
  auto const d = document_of("old");
  type(*d, u" mine");
  folder.write("file", "theirs");
  std::string const asked =
      "File Changed on Disk|The file for the document at " + d->filename() +
      " has been modified by another application. There are also unsaved changes in Quirnote. Do "
      "you want to keep the Quirnote version or revert to the version on disk?|";
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_EQ(alerts(), strings{asked + "Keep Quirnote Version"});
  EXPECT_EQ(text_of(*d), u"old mine");
  EXPECT_TRUE(d->isDocumentEdited());
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_EQ(alerts(), strings());

  set_date(d->filename(), 1000);
  answer("File Changed on Disk", "Revert");
  EXPECT_TRUE(d->checkForFilesystemChanges());
  EXPECT_EQ(alerts(), strings{asked + "Revert"});
  EXPECT_EQ(text_of(*d), u"theirs");
  EXPECT_FALSE(d->isDocumentEdited());
}

TEST_F(document, is_saved_when_its_file_comes_to_hold_the_same) {
  auto const d = document_of("text");
  type(*d, u" and more");
  auto const memento = d->storage().current_memento;
  folder.write("file", "text and more");
  set_date(d->filename(), 1000);
  // Nothing that anybody has to know.
  EXPECT_EQ(errors_of([&] { EXPECT_FALSE(d->checkForFilesystemChanges()); }), "");
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_EQ(d->storage().current_memento, memento);
  d->storage().undo_manager.undo();
  EXPECT_TRUE(d->isDocumentEdited());
  EXPECT_EQ(alerts(), strings());
}

TEST_F(document, tells_once_that_a_change_is_too_large) {
  auto const d = document_of("text");
  if (truncate(d->filename().c_str(), off_t{3} << 30) != 0) GTEST_SKIP() << "no sparse files here";
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_EQ(text_of(*d), u"text");
  EXPECT_FALSE(save(d));  // asks, as the file holds more than was ever seen
  EXPECT_EQ(alerts().size(), 1u);
}

TEST_F(document, asks_one_question_at_a_time) {
  auto const d = document_of("old");
  type(*d, u" mine");
  folder.write("file", "theirs");
  // As an application does that becomes active.
  desktop.alerts().while_open = [&] { EXPECT_FALSE(d->checkForFilesystemChanges()); };
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_EQ(desktop.alerts().shown.size(), 1u);
}

TEST_F(document, keeps_its_text_when_the_file_becomes_something_else) {
  auto const d = document_of("text");
  std::filesystem::remove(d->filename());
  EXPECT_FALSE(d->checkForFilesystemChanges());
  std::filesystem::create_directory(d->filename());
  EXPECT_FALSE(d->checkForFilesystemChanges());
  EXPECT_EQ(text_of(*d), u"text");
  EXPECT_EQ(alerts(), strings());
  EXPECT_FALSE(WynDocument::document()->checkForFilesystemChanges());
}

}  // namespace
