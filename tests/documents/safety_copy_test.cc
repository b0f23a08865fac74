#include "documents/safety_copy.h"

#include "documents/document_fixture.h"
#include "documents/folder_in_tmp.h"
#include "path/faulting_calls.h"

namespace {

using documents::safety_copy;

// They have a TMPDIR of their own, since what other programs leave in theirs would be found too.
class safety_copies : public document {
 protected:
  safety_copies() { setenv("TMPDIR", tmp_.path().c_str(), 1); }
  ~safety_copies() override { unsetenv("TMPDIR"); }

  temporary_folder const tmp_;
  std::string const folder_ = state / "Quirnote";

  std::optional<safety_copy> make(std::string const& path, std::string const& bytes) {
    std::optional<safety_copy> copy;
    auto const error = safety_copy::create({path, "untitled\n2", {encoding::UTF16LE}},
                                           path::contents_of(bytes), copy);
    EXPECT_FALSE(error) << error->message;
    return copy;
  }
  auto files() const { return std::distance(std::filesystem::directory_iterator(folder_), {}); }
};

TEST_F(safety_copies, are_left_over_once_nobody_holds_them) {
  std::filesystem::create_directory(folder_);
  ASSERT_EQ(chmod(folder_.c_str(), 0777), 0);
  std::string const path = folder / "li\nne\xFF";
  std::string const bytes("\xFF\xFE\x61\0\n\0", 6);
  auto copy = make(path, bytes);
  EXPECT_EQ(mode_of(folder_), 0700u);
  EXPECT_EQ(mode_of(copy->file()), 0600u);
  EXPECT_TRUE(safety_copy::left_over().empty());

  copy.reset();
  for (int start = 0; start < 2; ++start) {
    auto const found = safety_copy::left_over();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(safety_copy::left_over().empty());  // another program has it now
    EXPECT_EQ(found[0].origin().path, path);
    EXPECT_EQ(found[0].origin().format.charset, encoding::UTF16LE);
    documents::file_text text;
    EXPECT_FALSE(found[0].read(text));
    EXPECT_TRUE(text.units.view() == u"a\n");
    EXPECT_FALSE(found[0].is_in_place());
    folder.write("li\nne\xFF", bytes);
    EXPECT_TRUE(found[0].is_in_place());
    std::filesystem::remove(path);
  }
  auto const untitled = make("", "");
  EXPECT_EQ(untitled->name(), "untitled\u240A2");
}

TEST_F(safety_copies, pass_over_what_is_none) {
  make(folder / "x", "text");
  std::string const good = safety_copy::left_over().at(0).file();
  ASSERT_EQ(symlink(good.c_str(), (folder_ + "/SafetyCopy-1").c_str()), 0);
  ASSERT_EQ(mkfifo((folder_ + "/SafetyCopy-2").c_str(), 0600), 0);
  state.write("Quirnote/SafetyCopy-3", "Quirnote safety copy 9999999999999999999999\n");
  state.write("Quirnote/SafetyCopy-4", "Quirnote safety copy 70\nshort");
  state.write("Quirnote/SafetyCopy-5", "");
  state.write("Quirnote/SafetyCopy-6.part", "just begun");
  std::string const old = state.write("Quirnote/SafetyCopy-7.part", "interrupted");
  timespec const long_ago[2] = {{1000, 0}, {1000, 0}};
  ASSERT_EQ(utimensat(AT_FDCWD, old.c_str(), long_ago, 0), 0);
  if (geteuid() == 0) {
    std::filesystem::copy_file(good, folder_ + "/SafetyCopy-8");
    ASSERT_EQ(chown((folder_ + "/SafetyCopy-8").c_str(), 1234, 1234), 0);
  }
  auto const before = files();
  auto const found = safety_copy::left_over();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].file(), good);
  EXPECT_EQ(files(), before - 1);
  EXPECT_FALSE(std::filesystem::exists(old));
}

TEST_F(safety_copies, failure_of_any_call_leaves_nothing_behind) {
  std::string const bytes(5000, 'x');
  for (int nth = 1;; ++nth) {
    faulting_calls calls(nth, ENOSPC);
    std::optional<safety_copy> copy;
    auto const error =
        safety_copy::create({folder / "x", "", {}}, path::contents_of(bytes), copy, calls);
    if (!calls.has_failed()) {
      EXPECT_GT(nth, 10);
      break;
    }
    SCOPED_TRACE(std::to_string(nth) + calls.failed_call());
    EXPECT_NE(error.has_value(), copy.has_value());
    if (copy) copy->remove();
    EXPECT_TRUE(!std::filesystem::exists(folder_) || files() == 0);
  }
}

TEST_F(safety_copies, user_is_asked_when_none_can_be_made) {
  state.write("Quirnote", "no folder");
  auto const d = document_of("old");
  type(*d, u" and new");
  EXPECT_FALSE(save(d));
  EXPECT_EQ(alerts(),
            std::vector<std::string>{
                "No Safety Copy|No safety copy of the file \u201Cfile\u201D could be made "
                "in \u201C" +
                folder_ +
                "\u201D. Not a directory. If saving is interrupted, what the file holds "
                "may be lost. Would you like to save it all the same?|Cancel"});
  EXPECT_EQ(on_disk(), "old");
  EXPECT_TRUE(d->isDocumentEdited());
  answer("No Safety Copy", "Save Anyway");
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), "old and new");
  alerts();
  type(*d, u"!");
  defaults().set("WynSaveAtomically", true);  // which needs none
  EXPECT_TRUE(save(d));
  EXPECT_EQ(alerts().size(), 0u);
}

TEST_F(safety_copies, go_where_there_is_a_folder_for_them) {
  std::string const runtime = getenv("XDG_RUNTIME_DIR") ? getenv("XDG_RUNTIME_DIR") : "";
  std::string const cache = getenv("XDG_CACHE_HOME") ? getenv("XDG_CACHE_HOME") : "";
  std::string const nowhere = folder.write("file", "old") + "/x";
  struct {
    char const* variables[3];
    std::string place;
  } const cases[] = {
      {{"state", "", ""}, folder / "state/Quirnote/SafetyCopy-"},
      {{"", "runtime", ""}, folder / "runtime/Quirnote/SafetyCopy-"},
      {{"", "", "cache"}, folder / "cache/Quirnote"},
      {{"", "", ""}, folder / ".file.quirnote-unsaved"},
      {{"", "", ""}, tmp_ / "Quirnote-" + std::to_string(geteuid()) + "/SafetyCopy-"},
  };
  for (auto const& c : cases) {
    constexpr char const* names[] = {"XDG_STATE_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"};
    for (int n = 0; n < 3; ++n) {
      std::string const place = folder / c.variables[n];
      if (*c.variables[n]) std::filesystem::create_directory(place);
      setenv(names[n], *c.variables[n] ? place.c_str() : nowhere.c_str(), 1);
    }
    bool const in_tmp = c.place.starts_with(tmp_.path());
    auto const d = in_tmp ? WynDocument::document() : open(folder / "file");
    type(*d, u"new");
    auto const error = d->keepUnsavedText();
    EXPECT_FALSE(error) << c.place << ": " << error->message;
    if (error) continue;
    std::string const path = d->filename();
    d->keepUnsavedText();  // takes the place of the first
    auto const all = [&] {
      return c.place.ends_with("-unsaved") ? safety_copy::left_over_beside(path)
                                           : safety_copy::left_over();
    };
    auto found = all();
    EXPECT_TRUE(found.empty());  // it is held
    const_cast<std::shared_ptr<WynDocument>&>(d).reset();
    found = all();
    ASSERT_EQ(found.size(), 1u) << c.place;
    EXPECT_TRUE(found[0].file().starts_with(c.place)) << found[0].file();
    found[0].remove();
  }
  // Copies that are there already, or are being made, stay.
  constexpr int most_beside = 10;
  std::vector<std::shared_ptr<WynDocument>> open_ones;
  for (int n = 0; n <= most_beside; ++n) {
    auto const d = WynDocument::initWithContentsOfFile(folder / "file");
    type(*d, u"text " + std::u16string(1, static_cast<char16_t>(u'a' + n)));
    EXPECT_FALSE(d->keepUnsavedText());
    open_ones.push_back(d);
  }
  open_ones.clear();
  auto beside = safety_copy::left_over_beside(folder / "file"), in_tmp = safety_copy::left_over();
  EXPECT_EQ(beside.size(), std::size_t{most_beside});
  EXPECT_EQ(in_tmp.size(), 1u);
  for (auto* copies : {&beside, &in_tmp})
    for (auto& copy : *copies) copy.remove();
  // Others have put something under the name in the folder that all may write to.
  std::string const name = tmp_ / "Quirnote-" + std::to_string(geteuid());
  std::string const ours = folder / "ours";
  std::filesystem::create_directory(ours);
  ASSERT_EQ(chmod(ours.c_str(), 0755), 0);
  std::error_code ignored;
  std::filesystem::remove(name, ignored);
  for (char const* target : {"/", ours.c_str(), ""}) {
    ASSERT_EQ(*target ? symlink(target, name.c_str()) : mkfifo(name.c_str(), 0600), 0);
    auto const gone = open(folder / "none/file");
    type(*gone, u"new");
    EXPECT_FALSE(gone->keepUnsavedText());
    const_cast<std::shared_ptr<WynDocument>&>(gone).reset();
    auto found = safety_copy::left_over();
    unlink(name.c_str());
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].file().starts_with(name + "-"));
    found[0].remove();
    std::filesystem::remove(std::filesystem::path(found[0].file()).parent_path(), ignored);
  }
  EXPECT_EQ(mode_of(ours), 0755u);
  // In one where others can rename things it is of no use.
  for (unsigned const mode : {0777u, 01777u, 0700u}) {
    ASSERT_EQ(chmod(tmp_.path().c_str(), mode), 0);
    EXPECT_EQ(documents::make_folder_in_tmp().starts_with(tmp_.path()), mode != 0777);
  }
  runtime.empty() ? unsetenv("XDG_RUNTIME_DIR") : setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
  cache.empty() ? unsetenv("XDG_CACHE_HOME") : setenv("XDG_CACHE_HOME", cache.c_str(), 1);
}

// What an interrupted copy left beside the file neither stays nor keeps a further copy away.
TEST_F(safety_copies, beside_the_file_are_made_where_others_were_interrupted) {
  std::string const file = folder.write("file", "old");
  auto const interrupted = [&](std::string const& name, std::time_t date) {
    timespec const times[2] = {{date, 0}, {date, 0}};
    EXPECT_EQ(utimensat(AT_FDCWD, folder.write(name, "half").c_str(), times, 0), 0);
  };
  interrupted(".file.quirnote-unsaved.part", 1000);
  interrupted(".file.quirnote-unsaved-2.part", std::time(nullptr));  // may still be written
  folder.write(".file.quirnote-unsaved", "something else");
  for (char const* name : {"XDG_STATE_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"})
    setenv(name, (file + "/x").c_str(), 1);
  auto d = open(file);
  type(*d, u"new");
  EXPECT_FALSE(d->keepUnsavedText());
  d.reset();
  for (char const* name : {"XDG_STATE_HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME"}) unsetenv(name);
  interrupted(".file.quirnote-unsaved-9.part", 1000);
  auto const found = safety_copy::left_over_beside(file);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].file(), folder / ".file.quirnote-unsaved-3");
  EXPECT_EQ(folder.names(),
            (std::set<std::string>{"file", ".file.quirnote-unsaved",
                                   ".file.quirnote-unsaved-2.part", ".file.quirnote-unsaved-3"}));
}

TEST_F(safety_copies, of_root_stay_out_of_the_folders_of_others) {
  if (geteuid() != 0) GTEST_SKIP() << "not root";
  ASSERT_EQ(chown(state.path().c_str(), 1234, 1234), 0);
  auto copy = make(folder / "x", "text");
  ASSERT_TRUE(copy);
  EXPECT_FALSE(copy->file().starts_with(state.path())) << copy->file();
  EXPECT_EQ(state.names(), std::set<std::string>());
  std::string const file = copy->file();
  copy.reset();
  auto const found = safety_copy::left_over();
  EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](auto& c) { return c.file() == file; }));
  std::filesystem::remove(file);
}

// Whatever bytes the copy is in, the document is what it was, and its file is saved as before.
TEST_F(safety_copies, restored_documents_keep_how_they_are_written) {
  struct {
    encoding::charset_t charset;
    line_ending::type ends;
    bool mark;
    std::u16string text;
    encoding::charset_t in_copy;
  } const cases[] = {
      {encoding::Latin1, line_ending::CRLF, false, u"\u00E9\n", encoding::Latin1},
      {encoding::Latin1, line_ending::CR, false, u"\u20AC\n", encoding::UTF8},
      {encoding::MacRoman, line_ending::LF, false, u"\u4E00\n", encoding::UTF8},
      {encoding::ASCII, line_ending::LF, false, u"\u00E9\n", encoding::UTF8},
      {encoding::UTF8, line_ending::CRLF, true, u"\u00E9\n", encoding::UTF8},
      {encoding::UTF16BE, line_ending::CR, true, u"\xD83D\n", encoding::UTF16BE},
  };
  for (auto const& c : cases) {
    auto const d = document_of("old\n");
    d->setFileEncoding(c.charset);
    d->setLineEnding(c.ends);
    d->setByteOrderMark(c.mark);
    type(*d, c.text);
    ASSERT_FALSE(d->keepUnsavedText());
    const_cast<std::shared_ptr<WynDocument>&>(d).reset();
    auto found = safety_copy::left_over();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0].origin().format.charset, c.in_copy);
    auto const restored = open(folder / "file");
    EXPECT_TRUE(restored->restore(std::move(found[0])));
    EXPECT_EQ(text_of(*restored), u"old\n" + c.text);
    EXPECT_EQ(restored->fileEncoding(), c.charset);
    EXPECT_EQ(restored->lineEnding(), c.ends);
    EXPECT_EQ(restored->byteOrderMark(), c.mark);
    restored->dropUnsavedText();
  }
}

TEST_F(safety_copies, restored_text_is_unsaved_and_the_copy_goes_when_it_is_saved) {
  std::string const bytes("\xFF\xFEn\0\n\0", 6);
  make(folder / "file", bytes);
  auto const d = document_of("old");
  EXPECT_TRUE(d->restore(std::move(safety_copy::left_over().at(0))));
  EXPECT_EQ(text_of(*d), u"n\n");
  EXPECT_TRUE(d->isDocumentEdited());
  EXPECT_EQ(on_disk(), "old");
  EXPECT_TRUE(safety_copy::left_over().empty());
  EXPECT_EQ(files(), 1);
  EXPECT_TRUE(save(d));
  EXPECT_EQ(on_disk(), bytes);
  EXPECT_EQ(files(), 0);
}

}  // namespace
