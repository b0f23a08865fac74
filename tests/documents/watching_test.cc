#include "documents/document_fixture.h"
#include "documents/replace_text.h"
#include "platform/notification_center.h"

// Files that other programs change while their documents stay open.
namespace {

namespace fs = std::filesystem;

constexpr double long_enough = platform::file_watcher::patience + 1;

class watching : public document {
 protected:
  /// The document as a window would hold it.
  std::shared_ptr<WynDocument> show(std::string const& path) {
    auto const d = open(path);
    d->openDocument();
    return d;
  }
  void wait() { desktop.loop().run_for(long_enough); }
  void replace(std::string const& name, std::string const& bytes) {
    folder.write("new", bytes);
    fs::rename(folder / "new", folder / name);
  }
};

TEST_F(watching, takes_over_what_others_write) {
  auto const d = show(folder.write("file", "old"));
  wait();
  folder.write("file", "new");
  desktop.loop().run_for(0.1);
  EXPECT_EQ(text_of(*d), u"old");  // it may go on being written
  wait();
  EXPECT_EQ(text_of(*d), u"new");
  replace("file", "replaced");
  wait();
  EXPECT_EQ(text_of(*d), u"replaced");
  d->closeDocument();
  folder.write("file", "later");
  wait();
  EXPECT_EQ(text_of(*d), u"replaced");
  EXPECT_EQ(alerts(), strings());
}

TEST_F(watching, takes_many_changes_for_one) {
  auto const d = show(folder.write("file", ""));
  int told = 0;
  auto const token = platform::notification_center::standard().observe(
      WynDocument::fileDidChange, [&](auto const&) { ++told; }, d.get());
  std::string bytes;
  for (int n = 0; n < 300; ++n) folder.write("file", bytes += "x"), folder.write("other", bytes);
  wait();
  EXPECT_EQ(told, 1);
  EXPECT_EQ(d->length(), bytes.size());

  // One that never ends is told all the same.
  for (int n = 0; n < 100; ++n) {
    folder.write("file", bytes += "x");
    desktop.loop().run_for(0.1);
  }
  EXPECT_GT(told, 3);
  EXPECT_LT(told, 8);
}

TEST_F(watching, does_not_hear_of_its_own_saves) {
  auto const d = show(folder.write("file", "old"));
  int told = 0;
  auto const token = platform::notification_center::standard().observe(
      WynDocument::fileDidChange, [&](auto const&) { ++told; }, d.get());
  for (bool const atomically : {false, true}) {
    defaults().set("WynSaveAtomically", atomically);
    type(*d, u"x");
    EXPECT_TRUE(save(d));
    type(*d, u"y");
    wait();
    EXPECT_TRUE(d->isDocumentEdited());
  }
  EXPECT_EQ(told, 0);
  EXPECT_EQ(alerts(), strings());
}

TEST_F(watching, waiting_for_an_answer_is_no_work_to_rest_from) {
  auto const d = show(folder.write("file", "old"));
  type(*d, u"x");
  desktop.alerts().while_open = [&] { desktop.loop().run_for(60); };
  for (char const* const bytes : {"theirs", "theirs again", "and again"}) {
    folder.write("file", bytes);
    wait();
    EXPECT_EQ(alerts().size(), 1u);
  }
}

TEST_F(watching, asks_one_question_after_the_other) {
  auto const a = show(folder.write("a", "old")), b = show(folder.write("b", "old"));
  type(*a, u"A");
  type(*b, u"B");
  folder.write("a", "theirs 1");
  std::size_t most = 0, open_now = 0;
  desktop.alerts().while_open = [&] {
    most = std::max(most, ++open_now);
    if (desktop.alerts().shown.size() == 1) {
      folder.write("a", "theirs 22");
      folder.write("b", "theirs 333");
      wait();
    }
    --open_now;
  };
  wait();
  EXPECT_EQ(desktop.alerts().shown.size(), 3u);  // each for a change of its own
  EXPECT_EQ(most, 1u);
  EXPECT_EQ(text_of(*a), u"oldA");
  wait();
  EXPECT_EQ(desktop.alerts().shown.size(), 3u);
}

TEST_F(watching, text_without_a_file_is_unsaved) {
  auto const d = show(folder.write("file", "text"));
  fs::rename(folder / "file", folder / "elsewhere");
  wait();
  EXPECT_TRUE(d->isDocumentEdited());
  fs::rename(folder / "elsewhere", folder / "file");
  wait();
  EXPECT_FALSE(d->isDocumentEdited());

  fs::remove(folder / "file");
  wait();
  folder.write("file", "another text");
  wait();
  EXPECT_EQ(text_of(*d), u"another text");  // nothing was typed, so nothing is asked
  EXPECT_FALSE(d->isDocumentEdited());

  fs::remove(folder / "file");
  wait();
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "another text");
  EXPECT_FALSE(d->isDocumentEdited());
  EXPECT_EQ(alerts(), strings());

  auto const fresh = show(folder / "not yet");
  wait();
  EXPECT_FALSE(fresh->isDocumentEdited());
  folder.write("not yet", "made");
  wait();
  EXPECT_EQ(text_of(*fresh), u"made");
}

/// Writes with a date that no other file has, as the clock of a file system ticks slowly.
void write_dated(std::string const& path, std::string const& bytes,
                 std::ios::openmode mode = std::ios::out) {
  static int seconds = 0;
  std::ofstream(path, mode) << bytes;
  std::error_code ignored;
  fs::last_write_time(path, fs::file_time_type(std::chrono::seconds(++seconds)), ignored);
}

// After whatever may happen to a file, to the links to it and to its folder, its document holds
// what the file does, and is edited just when there is no file.
TEST_F(watching, follows_random_changes) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    std::mt19937 random(seed);
    std::error_code ignored;
    fs::remove_all(folder / "a", ignored);
    fs::remove_all(folder / "b", ignored);
    fs::create_directories(folder / "a/deep");
    fs::create_directories(folder / "b");
    std::string const target = folder / "a/deep/file", other = folder / "b/other";
    write_dated(target, "first");
    write_dated(other, "other");
    fs::remove(folder / "link", ignored);
    fs::create_symlink("a/deep/file", folder / "link");
    bool const by_link = seed % 2 == 1;
    std::string const path = by_link ? folder / "link" : target;
    auto const d = show(path);
    std::string log, bytes;
    std::function<void()> const changes[] = {
        [&] { write_dated(target, bytes); },
        [&] { write_dated(target, bytes, std::ios::app); },
        [&] { fs::remove(target, ignored); },
        [&] { write_dated(folder / "new", bytes), fs::rename(folder / "new", target, ignored); },
        [&] { fs::rename(target, other, ignored); },
        [&] { fs::rename(other, target, ignored); },
        [&] { fs::remove_all(folder / "a", ignored); },
        [&] { fs::create_directories(folder / "a/deep"); },
        [&] { fs::rename(folder / "a/deep", folder / "b/deep", ignored); },
        [&] { fs::remove(folder / "link"), fs::create_symlink("b/other", folder / "link"); },
        [&] { fs::remove(folder / "link"), fs::create_symlink(target, folder / "link"); },
    };
    for (int step = 0; step < 25; ++step) {
      bytes = "text " + std::to_string(random() % 100) + "\n";
      auto const what = random() % std::size(changes);
      log += std::to_string(what) + " ";
      fs::create_directories(folder / "b");
      changes[what]();
      if (random() % 3 != 0) continue;
      wait();
      bool const exists = fs::is_regular_file(path);
      EXPECT_EQ(d->isDocumentEdited(), !exists) << seed << ": " << log;
      if (!exists) continue;
      std::string const now = folder.read(path);
      EXPECT_EQ(text_of(*d), std::u16string(now.begin(), now.end())) << seed << ": " << log;
    }
    d->closeDocument();
  }
  EXPECT_EQ(alerts(), strings());
}

TEST_F(watching, keeps_the_lines_that_stay) {
  struct {
    char16_t const *before, *after;
    std::size_t kept_units;  // of `before`, which aren't erased
  } const cases[] = {
      {u"a\nb\nc", u"a\nX\nc", 4},
      {u"a\nb\nc", u"a\nb\nc", 4},
      {u"", u"x", 0},
      {u"x", u"", 0},
      {u"a\na\na", u"a\na", 2},
      {u"a\na", u"a\na\na", 2},
      {u"a\n", u"a\n\n", 2},
      {u"\n\n", u"\n", 1},
      {u"ab\nc", u"b\nc", 2},
      {u"a\nbc", u"a\nb", 2},
      {u"a\nb\n", u"c\n", 1},
  };
  for (auto const& c : cases) {
    text::storage storage;
    storage.insert(storage.end(-1), text::text_block::copy(c.before));
    storage.forget_history();
    documents::replace_text(storage, text::text_block::copy(c.after));
    EXPECT_EQ(units_of(storage), c.after);
    std::size_t erased = 0;
    for (auto const& record : storage.undo_records)
      if (record.type == text::undo_type::erasure) erased += record.length;
    EXPECT_LE(erased, std::u16string_view(c.before).size() - c.kept_units) << erased;
    while (storage.undo_manager.can_undo()) storage.undo_manager.undo();
    EXPECT_EQ(units_of(storage), c.before);
  }
}

}  // namespace
