#include "search/project_replace.h"

#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "path/faulting_calls.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "search/project_search.h"
#include "test.h"

// Replacing in many files: what stands in each of them afterwards, and what is said of it.
namespace {

namespace fs = std::filesystem;

class project_replace : public testing::Test {
 protected:
  project_replace() { setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1); }

  std::vector<search::found_file> found(std::string const& sought) {
    search::project_search_request const request{
        .query = {.sought = unicode::to_utf16(sought),
                  .rules = {.text = {"t"}, .binary = {}, .languages = {}}},
        .roots = {{folder / "files", true, {}}},
        .files = {},
        .open = {}};
    search::project_results results;
    std::atomic<bool> const never = false;
    search::search_project(
        request, [&](search::file_result file) { results.add(std::move(file), std::nullopt); },
        never);
    return results.files();
  }
  static void finish(search::project_replace& replacing) {
    while (replacing.step()) continue;
  }
  std::string path_of(int n) const { return folder / ("files/" + std::to_string(n) + ".t"); }

  temporary_folder folder;
  own_defaults const settings;
  headless::headless_desktop desktop;
};

TEST_F(project_replace, writes_what_a_naive_one_does_and_puts_it_back) {
  strings const pieces = {"ab", "a", "b", " ", "\u00e9", "\U0001F600", "aab"};
  std::mt19937 random(15);
  std::vector<std::string> texts;
  fs::create_directory(folder / "files");
  for (int n = 0; n < 60; ++n) {
    std::string const end = n % 3 == 0 ? "\r\n" : "\n";
    std::string text = n % 7 == 0 ? "\xEF\xBB\xBF" : "";
    for (auto count = random() % 40; count > 0; --count)
      text += random() % 5 == 0 ? end : pieces[random() % pieces.size()];
    folder.write("files/" + std::to_string(n) + ".t", text);
    texts.push_back(text);
  }
  fs::permissions(path_of(1), fs::perms::owner_all);
  search::project_replace replacing(found("ab"), {"X\u00e9", false});
  finish(replacing);
  EXPECT_EQ(replacing.faults(), 0u);
  std::size_t replaced = 0;
  for (int n = 0; n < 60; ++n) {
    std::string expected = texts[static_cast<std::size_t>(n)];
    for (std::size_t at = 0; (at = expected.find("ab", at)) != expected.npos; ++replaced)
      expected.replace(at, 2, "X\u00e9");
    ASSERT_EQ(content_of_file(path_of(n)), expected) << n;
  }
  EXPECT_EQ(replacing.replaced(), replaced);
  EXPECT_EQ(fs::status(path_of(1)).permissions(), fs::perms::owner_all);

  // Back, but for what has been changed since; stopped once on the way.
  folder.write("files/1.t", "mine");
  for (int const steps : {5, 100}) {
    ASSERT_TRUE(replacing.can_undo());
    replacing.begin_undo();
    for (int n = 0; n < steps && replacing.step();) ++n;
  }
  EXPECT_FALSE(replacing.can_undo());
  for (int n = 0; n < 60; ++n)
    if (n != 1) ASSERT_EQ(content_of_file(path_of(n)), texts[static_cast<std::size_t>(n)]) << n;
  EXPECT_EQ(content_of_file(path_of(1)), "mine");
  EXPECT_LE(replacing.faults(), 1u);
}

TEST_F(project_replace, leaves_a_file_alone_where_a_save_would_have_to_ask) {
  struct row {
    char const *bytes, *replacement;
    std::function<void(std::string const&)> meanwhile;
    char const* fault;
  };
  auto const nothing = [](std::string const&) {};
  auto const change = [](std::string const& path) { std::ofstream(path) << "x x"; };
  auto const remove = [](std::string const& path) { fs::remove(path); };
  auto const protect = [](std::string const& path) {
    fs::permissions(path, fs::perms::owner_read);
  };
  int n = 0;
  for (auto const& [bytes, replacement, meanwhile, fault] :
       {row{"x", "y", change, "changed"}, row{"x", "y", remove, "o such file"},
        row{"x", "y", protect, "read-only"}, row{"caf\xe9 x\n", "\u4e00", nothing, "encoding"},
        row{"x \x01\r\n\n\x02", "y", nothing, "no text"}}) {
    fs::remove_all(folder / "files");
    fs::create_directory(folder / "files");
    folder.write("files/0.t", bytes);
    auto const matches = found("x");
    ASSERT_EQ(matches.size(), 1u) << n;
    meanwhile(path_of(0));
    std::string const before = fs::exists(path_of(0)) ? content_of_file(path_of(0)) : "";
    search::project_replace replacing(matches, {replacement, false});
    finish(replacing);
    ASSERT_EQ(replacing.report().size(), 1u);
    EXPECT_NE(replacing.report()[0].fault.find(fault), std::string::npos)
        << n << ": " << replacing.report()[0].fault;
    if (fs::exists(path_of(0))) EXPECT_EQ(content_of_file(path_of(0)), before);
    EXPECT_FALSE(replacing.can_undo());
    ++n;
  }
}

// Whichever call fails, as on a full disk, each file is old or new, and the report says which.
TEST_F(project_replace, leaves_each_file_old_or_new_when_a_call_fails) {
  for (bool const atomically : {true, false}) {
    platform::user_defaults::standard().set("WynSaveAtomically", atomically);
    for (int nth = 1, files = 3;; ++nth) {
      fs::remove_all(folder / "files");
      fs::create_directory(folder / "files");
      for (int n = 0; n < files; ++n) folder.write("files/" + std::to_string(n) + ".t", "x x\n");
      faulting_calls calls(nth, ENOSPC);
      search::project_replace replacing(found("x"), {"yy", false}, calls);
      finish(replacing);
      ASSERT_EQ(replacing.report().size(), 3u);
      for (int n = 0; n < files; ++n) {
        auto const& file = replacing.report()[static_cast<std::size_t>(n)];
        std::string const bytes = content_of_file(path_of(n));
        ASSERT_TRUE(bytes == "x x\n" || bytes == "yy yy\n" ||
                    file.fault.find("safety copy") != std::string::npos)
            << calls.failed_call() << ": " << bytes;
        if (file.fault.empty()) ASSERT_EQ(bytes, "yy yy\n") << calls.failed_call();
      }
      if (!calls.has_failed()) break;
      ASSERT_LT(nth, 500);
    }
  }
}

TEST_F(project_replace, changes_an_open_document_in_one_step) {
  fs::create_directory(folder / "files");
  folder.write("files/0.t", "x x\nx\n");
  folder.write("files/1.t", "x\n");
  auto matches = found("x");
  matches[0].ticked[1] = false;
  // Opened since, as to look at what was found.
  auto const document = WynDocument::documentWithContentsOfFile(path_of(0));
  document->openDocument();
  search::project_replace replacing(matches, {"long", false});
  finish(replacing);
  EXPECT_EQ(document->storage().whole_text(), u"long x\nlong\n");
  EXPECT_TRUE(document->isDocumentEdited());
  EXPECT_EQ(content_of_file(path_of(0)), "x x\nx\n");
  EXPECT_EQ(content_of_file(path_of(1)), "long\n");
  document->storage().undo_manager.undo();
  EXPECT_EQ(document->storage().whole_text(), u"x x\nx\n");
  document->storage().undo_manager.redo();
  replacing.begin_undo();
  finish(replacing);
  EXPECT_EQ(document->storage().whole_text(), u"x x\nx\n");
  EXPECT_EQ(content_of_file(path_of(1)), "x\n");
  // Once more with the same matches: the file on the disk is another one now, and so the memento.
  document->storage().insert(document->storage().begin_of_line(0), 1, u'!');
  search::project_replace again(matches, {"z", false});
  finish(again);
  EXPECT_EQ(again.replaced(), 0u);
  EXPECT_EQ(again.faults(), 2u);
  document->closeDocument();
}

}  // namespace
