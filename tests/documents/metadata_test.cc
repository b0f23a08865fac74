#include <zlib.h>

#include <numeric>

#include "documents/document_fixture.h"
#include "documents/file_metadata.h"
#include "documents/view_metadata.h"
#include "text/views/bookmark_filter.h"

// What is kept of a text beside it: in attributes of its file, and for projects.
namespace {

using lines = std::vector<std::size_t>;

constexpr char const* bookmarks_name = "com.quirnworks.bookmarked_lines";
constexpr char const* caret_name = "com.quirnworks.caret";
constexpr char const* foldings_name = "com.quirnworks.foldings";

lines bookmarks(text::view const& view) {
  lines result;
  for (text::pos const mark : view.bookmark_filter->marks.list()) result.push_back(mark.line);
  return result;
}

text::pos caret(text::view const& view) {
  return view.selection.current_mark.base.pos();
}

class metadata : public document {
 protected:
  void SetUp() override {
    std::string const path = folder.write("probe", "");
    if (setxattr(path.c_str(), "user.probe", "x", 1, 0) != 0)
      GTEST_SKIP() << "no extended attributes here";
  }
  void store(char const* name, std::string const& bytes) {
    std::string const full = "user." + std::string(name);
    ASSERT_EQ(setxattr((folder / "file").c_str(), full.c_str(), bytes.data(), bytes.size(), 0), 0);
  }
  std::string stored(char const* name) {
    std::string bytes(65536, '\0');
    std::string const full = "user." + std::string(name);
    ssize_t const size =
        getxattr((folder / "file").c_str(), full.c_str(), bytes.data(), bytes.size());
    return bytes.substr(0, size < 0 ? 0 : static_cast<std::size_t>(size));
  }
  struct stat info() {
    struct stat result;
    EXPECT_EQ(stat((folder / "file").c_str(), &result), 0);
    return result;
  }
  /// Opens the file, has `use` do something in a view, and closes it again.
  template <typename Use>
  void visit(Use use) {
    auto const d = open(folder / "file");
    text::view* const view = d->obtainView();
    use(*d, *view);
    d->releaseView(view);
  }
  static void put_caret(text::view& view, std::size_t line, std::size_t column) {
    view.selection.set_caret(view.in_view({line, column, view.storage}));
  }
};

TEST_F(metadata, comes_back_when_the_file_is_opened_again) {
  folder.write("file", "one\ntwo\nthree\nfour\n");
  timespec const before = info().st_mtim;
  visit([](auto&, text::view& view) {
    put_caret(view, 2, 4);
    view.set_bookmark({1, 0}, true);
    view.set_bookmark({3, 2}, true);
  });
  EXPECT_EQ(stored(caret_name), "{\tcolumn = '4';\n\tline = '2';\n}");
  EXPECT_EQ(stored(bookmarks_name), "( '1', '3' )");
  EXPECT_EQ(info().st_mtim.tv_nsec, before.tv_nsec);
  EXPECT_EQ(info().st_mtim.tv_sec, before.tv_sec);

  timespec const status = info().st_ctim;
  visit([](auto&, text::view& view) {
    EXPECT_EQ(caret(view), (text::pos{2, 4}));
    EXPECT_EQ(bookmarks(view), (lines{1, 3}));
  });
  EXPECT_EQ(info().st_ctim.tv_nsec, status.tv_nsec);  // nothing new, so nothing was written

  visit([this](WynDocument& d, text::view& view) {
    view.set_bookmark({1, 0}, false);
    view.set_bookmark({3, 0}, false);
    EXPECT_TRUE(d.writeToFile(d.filename()));
    EXPECT_EQ(stored(bookmarks_name), "");
    EXPECT_FALSE(d.checkForFilesystemChanges());
  });
}

TEST_F(metadata, fits_the_text_that_is_there) {
  folder.write("file", "one\ntwo");
  testing::internal::CaptureStdout();
  struct {
    char const *caret, *bookmarks;
    text::pos at;
    lines marked;
  } const cases[] = {
      {"{ line = '9'; column = '9'; }", "( '0', '1', '2', '-1', 'x' )", {1, 3}, {0, 1}},
      {"{ line = 0; column = 9; }", "{ a = '1'; }", {0, 3}, {}},
      {"{ line = '-5'; column = '4294967296'; }", "( ( '1' ), 1 )", {0, 3}, {1}},
      {"( '1', '2' )", "'1'", {0, 0}, {}},
      {"{ line = '1'", "(", {0, 0}, {}},
      {"\x78\x9C\xFF\xFF", "\xC3(\xFF", {0, 0}, {}},
  };
  for (auto const& c : cases) {
    store(caret_name, c.caret);
    store(bookmarks_name, c.bookmarks);
    auto const d = WynDocument::initWithContentsOfFile(folder / "file");
    text::view const& view = *d->obtainView();
    EXPECT_EQ(caret(view), c.at) << c.caret;
    EXPECT_EQ(bookmarks(view), c.marked) << c.bookmarks;
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(metadata, keeps_folds) {
  folder.write("file", "a\n  b\nc\nd");
  store(foldings_name,
        "( { from = '0'; to = '3'; indent = '4'; }, { f = 1; t = 2; i = 0; }, { from = 1; to = 1; "
        "indent = 0; }, { f = 2; t = 4; i = 0; }, { from = 0; to = 2; }, 'x' )");
  testing::internal::CaptureStdout();
  visit([](auto&, text::view& view) { EXPECT_EQ(view.lines(), 1u); });
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  auto const list = documents::GetFileAttribute(folder / "file", foldings_name);
  auto const fold = [](char const* from, char const* to, char const* indent) {
    return plist::dictionary{{"from", from}, {"to", to}, {"indent", indent}};
  };
  EXPECT_EQ(list, plist::value(plist::array{fold("0", "3", "0"), fold("1", "2", "2")}));
}

TEST_F(metadata, of_any_size_is_read_in_bounds) {
  folder.write("file", std::string(30000, '\n'));
  std::string const list = "(" + repeated(" { f = 1; t = 2; i = 0; },", 200000);
  auto const packed = [](std::string const& text) {
    uLongf size = compressBound(text.size());
    std::string bytes(size, '\0');
    compress(reinterpret_cast<Bytef*>(bytes.data()), &size,
             reinterpret_cast<Bytef const*>(text.data()), text.size());
    return bytes.substr(0, size);
  };
  for (std::size_t const size : {std::size_t{100}, std::size_t{100000}, list.size()}) {
    std::string const text = list.substr(0, list.rfind('}', size) + 1) + " )";
    if (packed(text).size() > 4000) continue;  // more than some file systems take
    store(foldings_name, packed(text));
    auto const d = WynDocument::initWithContentsOfFile(folder / "file");
    std::size_t const lines = d->obtainView()->lines();
    EXPECT_EQ(lines, size <= documents::max_unpacked_size ? 29999u + 1 : 30001u) << size;
  }
}

TEST_F(metadata, goes_to_the_file_that_was_read_alone) {
  folder.write("file", "one\ntwo");
  folder.write("other", "one\ntwo");
  visit([&](auto&, text::view& view) {
    put_caret(view, 1, 1);
    std::filesystem::remove(folder / "file");
    ASSERT_EQ(symlink("other", (folder / "file").c_str()), 0);
  });
  EXPECT_EQ(stored(caret_name), "");
}

TEST_F(metadata, is_compressed_and_never_larger_than_allowed) {
  for (std::size_t const count : {1u, 20u, 400u, 5000u}) {
    folder.write("file", std::string(20000, '\n'));
    plist::array all;
    for (std::size_t n = 0; n < count; ++n) all.push_back(std::to_string(n * n % 19997));
    documents::savePlistMetadata(folder / "file", all, bookmarks_name);
    std::string const bytes = stored(bookmarks_name);
    EXPECT_LE(bytes.size(), documents::max_attribute_size);
    auto const read = documents::GetFileAttribute(folder / "file", bookmarks_name).elements();
    ASSERT_LE(read.size(), all.size());
    EXPECT_TRUE(std::equal(read.begin(), read.end(), all.begin())) << count;
    EXPECT_GE(read.size(), std::min<std::size_t>(count, 200));
    timespec const status = info().st_ctim;
    documents::savePlistMetadata(folder / "file", all, bookmarks_name);
    EXPECT_EQ(info().st_ctim.tv_nsec, status.tv_nsec);
  }
  documents::savePlistMetadata(folder / "file", std::string(9000, '\1') + "x", caret_name);
  EXPECT_EQ(documents::GetFileAttribute(folder / "file", caret_name).string_or("").size(), 9001u);
}

TEST_F(metadata, can_be_turned_off_by_file_system) {
  std::string const type = documents::filesystem(folder / "file");
  EXPECT_NE(type, "unknown");
  EXPECT_EQ(documents::filesystem("/proc/self/status"), "proc");
  struct {
    plist::value setting;
    bool disabled;
  } const cases[] = {
      {{}, false},
      {true, true},
      {0, false},
      {"1", true},
      {plist::array{}, false},
      {plist::array{"msdos", type}, true},
      {plist::array{"msdos"}, false},
  };
  for (auto const& c : cases) {
    defaults().set("WynDocumentDisableFSMetaData", c.setting);
    folder.write("file", "one\ntwo");
    store(caret_name, "{ line = 1; column = 1; }");
    visit([&](auto&, text::view& view) {
      EXPECT_EQ(caret(view).line, c.disabled ? 0u : 1u);
      put_caret(view, 0, 2);
    });
    EXPECT_EQ(stored(caret_name).find("'2'") == std::string::npos, c.disabled);
  }
}

TEST_F(metadata, is_left_alone_where_it_may_not_be_written) {
  folder.write("file", "text");
  ASSERT_EQ(chmod((folder / "file").c_str(), 0444), 0);
  visit([](auto&, text::view& view) { put_caret(view, 0, 2); });
  std::filesystem::remove(folder / "file");
  visit([](auto&, auto&) {});
  EXPECT_EQ(folder.names().count("file"), 0u);
  EXPECT_EQ(alerts(), std::vector<std::string>());
}

TEST_F(metadata, of_a_project_describes_the_view_last_handed_out) {
  auto const d = document_of("one\ntwo\nthree");
  EXPECT_FALSE(d->metaData());
  d->setMetaData({});
  EXPECT_FALSE(d->metaData());
  auto const place = [](int line, int column) {
    return plist::dictionary{{"line", line}, {"column", column}};
  };
  plist::dictionary const wanted{{"caret", place(2, 1)},    {"selectFrom", place(0, 1)},
                                 {"selectTo", place(2, 1)}, {"columnSelection", true},
                                 {"firstVisibleLine", 1},   {"firstVisibleColumn", 3}};
  d->setMetaData(wanted);
  EXPECT_EQ(d->metaData(), plist::value(wanted));
  d->setMetaData(plist::dictionary{{"caret", place(7, 7)}});
  EXPECT_EQ(d->metaData(),
            plist::value(plist::dictionary{
                {"caret", place(2, 5)}, {"firstVisibleLine", -1}, {"firstVisibleColumn", 0}}));
}

TEST_F(metadata, goes_to_the_place_that_an_editor_client_names) {
  struct {
    std::int16_t line;
    std::int32_t start, end;
    text::pos first, last;
  } const cases[] = {
      {1, 0, 0, {1, 0}, {1, 0}},   {99, 0, 0, {2, 0}, {2, 0}}, {-1, 3, 4, {0, 3}, {1, 0}},
      {-1, 5, 9, {1, 1}, {2, 1}},  {-1, 2, 1, {0, 0}, {0, 0}}, {-1, -1, 4, {0, 0}, {0, 0}},
      {-2, 5, 99, {1, 1}, {2, 5}},
  };
  for (auto const& c : cases) {
    auto const d = WynDocument::initWithContentsOfFile(folder.write("file", "one\ntwo\nthree"));
    plist::data record(20);
    std::memcpy(&record[2], &c.line, 2);
    std::memcpy(&record[4], &c.start, 4);
    std::memcpy(&record[8], &c.end, 4);
    d->setAuxiliaryFileInfo({{"position", record}, {"line", 3}});
    text::selection const& selection = d->obtainView()->selection;
    EXPECT_EQ(selection.first_mark.base.pos(), c.first) << c.start;
    EXPECT_EQ(selection.last_mark.base.pos(), c.last) << c.start;
    EXPECT_EQ(selection.current_mark.base.pos(), c.first) << c.start;
    EXPECT_EQ(caret(*d->obtainView()).line, 2u);  // the position counts once
    std::filesystem::remove(folder / "file");
  }
}

TEST_F(metadata, tells_each_opener_once_whether_its_file_holds_the_text) {
  using strings = std::vector<std::string>;
  strings told;
  auto const opener = [&](char const* name, bool takes_text = false) {
    return WynDocument::opener{name, takes_text, [&told, name](bool is_saved) {
                                 told.push_back(std::string(name) + (is_saved ? "+" : "-"));
                               }};
  };
  auto d = document_of("text");
  d->openDocument();
  d->addOpener(opener("git"));
  d->addOpener(opener("git"));
  auto const gone = d->addOpener(opener("sh"));
  EXPECT_EQ(d->openerNames(), strings({"git", "sh"}));
  d->removeOpener(gone);
  EXPECT_TRUE(save(d));
  EXPECT_EQ(told, strings());
  d->closeDocument();
  EXPECT_EQ(told, strings({"git+", "git+"}));
  d->openDocument();
  d->addOpener(opener("crontab"));
  d->setFilename(folder / "other");
  d->addOpener(opener("visudo"));
  d->setDocumentEdited(true);
  d.reset();
  EXPECT_EQ(told, strings({"git+", "git+", "crontab-", "visudo-"}));
  auto const untitled = WynDocument::document();
  untitled->addOpener(opener("sort", true));
  EXPECT_TRUE(untitled->textIsTaken());
  untitled->setFilename(folder / "third");
  EXPECT_FALSE(untitled->textIsTaken());
}

}  // namespace
