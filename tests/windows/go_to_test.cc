#include <thread>

#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "platform/utf.h"
#include "settings/store.h"
#include "test.h"
#include "windows/WynFileChooser.h"
#include "windows/go_to_box.h"

namespace {

class go_to_file : public testing::Test {
 protected:
  go_to_file() {
    for (char const* name :
         {"p/src/main.c", "p/src/fooBar.c", "p/test/fooBar.c", "p/fabric.c", "else.c"})
      put(name);
    wanted.files.roots = {{folder / "p", true, {}}};
  }
  void put(std::string const& name) {
    std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
    folder.write(name, "");
  }
  /// As a picker does it: takes rows until there are no more to come; gives where `chosen` is then.
  std::size_t fill(std::size_t chosen = 0) {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (chooser->is_filling() && std::chrono::steady_clock::now() < end) {
      desktop.loop().run_posted();
      chosen = chooser->take_new_rows(chosen).value_or(chosen);
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return chosen;
  }
  void open() {
    chooser = std::make_unique<WynFileChooser>(
        wanted, lists,
        [this](std::string const& path, std::optional<text::line_place> const& place,
               platform::picked_way) {
          opened = path.substr(folder.path().size() + 1);
          if (place)
            opened += ":" + std::to_string(place->line) + ":" + std::to_string(place->column);
          return true;
        });
  }
  /// Titles with the letters that match in brackets, and the details.
  strings rows(char const* typed) {
    chooser->set_filter(typed);
    strings result;
    for (std::size_t n = 0; n < chooser->count(); ++n) {
      auto const row = chooser->row(n);
      std::u16string title = row.title;
      for (auto at = row.matched.rbegin(); at != row.matched.rend(); ++at)
        title.replace(*at, 1, u"[" + title.substr(*at, 1) + u"]");
      result.push_back(unicode::to_utf8(title) + (row.detail.empty() ? "" : " " + row.detail));
    }
    return result;
  }

  temporary_folder folder;
  headless::headless_desktop desktop;
  own_defaults const defaults;
  windows::file_lists lists;
  WynFileChooser::request wanted;
  std::unique_ptr<WynFileChooser> chooser;
  std::string opened;
};

TEST_F(go_to_file, lists_those_used_last_first_and_tells_names_apart) {
  wanted.current = folder / "p/src/main.c";
  wanted.open = {folder / "p/src/main.c", folder / "p/fabric.c"};
  wanted.recent = {folder / "p/gone.c", folder / "p/test/fooBar.c", folder / "else.c"};
  open();
  EXPECT_EQ(rows("").at(0), "fabric.c");  // at once: no disk has been looked at
  fill();
  EXPECT_EQ(rows(""),
            strings({"fabric.c", "fooBar.c \u2014 test", "main.c", "fooBar.c \u2014 src"}));
  EXPECT_EQ(chooser->help(0), folder / "p/fabric.c");
  EXPECT_EQ(chooser->note(), "4 files");
  EXPECT_EQ(rows("fb"),
            strings({"[f]oo[B]ar.c \u2014 test", "[f]oo[B]ar.c \u2014 src", "[f]a[b]ric.c"}));
  EXPECT_EQ(chooser->note(), "3 of 4 files");
  EXPECT_EQ(rows("p/sr/m"), strings({"[m]ain.c \u2014 p/src"}));
  wanted.takes_all_recent = true;
  open();
  fill();
  EXPECT_EQ(rows("else").size(), 1U);
}

// The files of the last time are there until those of now are known, and the row that is chosen
// stays so.
TEST_F(go_to_file, opens_with_the_files_of_the_last_time) {
  open();
  fill();
  put("p/aaa.c");
  std::filesystem::remove(folder / "p/fabric.c");
  open();
  strings const before = rows("");
  EXPECT_EQ(before.size(), 4U);
  auto const chosen = std::find(before.begin(), before.end(), "main.c") - before.begin();
  std::size_t const now = fill(static_cast<std::size_t>(chosen));
  strings const after = rows("");
  EXPECT_EQ(after, strings({"aaa.c", "fooBar.c \u2014 src", "main.c", "fooBar.c \u2014 test"}));
  EXPECT_EQ(after[now], "main.c");
}

TEST_F(go_to_file, learns_what_letters_stand_for) {
  open();
  fill();
  EXPECT_EQ(rows("fb")[2], "[f]a[b]ric.c");
  EXPECT_EQ(chooser->first_row(), 0U);
  chooser->set_filter("fb:7:2");
  EXPECT_TRUE(chooser->accept({2}));
  EXPECT_EQ(opened, "p/fabric.c:7:2");
  for (char const* typed : {"f", "fb"}) {
    std::string const title = rows(typed)[chooser->first_row()];
    EXPECT_NE(title.find("ric.c"), title.npos) << title;
  }
  rows("fbr");
  EXPECT_EQ(chooser->first_row(), 0U);
  rows("");
  EXPECT_EQ(chooser->first_row(), 0U);
  ASSERT_EQ(settings::store().array("WynFileChooserBindings").size(), 1U);
}

TEST(go_to_box, the_first_character_says_what_is_looked_for) {
  using windows::go_to_box, windows::line_choice;
  int made = 0;
  std::string done;
  go_to_box box;
  for (char const prefix : {'\0', ':'})
    box.add(prefix, [&, prefix]() -> go_to_box::part {
      ++made;
      auto const line = std::make_shared<line_choice>(prefix == ':' ? 40 : 9);
      return {line, [&, line, prefix](platform::picked_row) {
                done = prefix + std::to_string(line->line()) + ":" + std::to_string(line->column());
                return true;
              }};
    });
  struct row {
    char const *typed, *title;
  };
  for (auto const& [typed, title] :
       {row{"12", "Go to line 9"}, row{":12", "Go to line 12"},
        row{":12:3", "Go to line 12, column 3"}, row{":", ""}, row{":x", ""}, row{":0", ""},
        row{"3:4", "Go to line 3, column 4"}, row{":99", "Go to line 40"}}) {
    box.set_filter(typed);
    EXPECT_EQ(box.count() == 0 ? "" : unicode::to_utf8(box.row(0).title), title) << typed;
    EXPECT_EQ(box.typed(), typed);
  }
  EXPECT_EQ(made, 2);
  EXPECT_TRUE(box.accept({0}));
  EXPECT_EQ(done, ":40:0");
}

}  // namespace
