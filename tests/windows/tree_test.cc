#include "projects/trash.h"
#include "tree_fixture.h"

// What keys, the mouse and actions do with the tree of a side bar, on a real folder.
namespace {

namespace fs = std::filesystem;
namespace key = platform::function_key;
namespace mod = platform::modifier;
using platform::drop_place;

class tree : public tree_without_window {
 protected:
  tree() {
    setenv("XDG_DATA_HOME", (outside / "data").c_str(), 1);
    fs::create_directories(folder / "b/inner");
    for (char const* name : {"a.txt", "b/one", "b/two", "b/inner/deep", "c10", "c9"})
      folder.write(name, name);
  }
  ~tree() override { unsetenv("XDG_DATA_HOME"); }
};

TEST_F(tree, is_walked_by_keys) {
  open_folder();
  press(key::down);
  press(key::down);
  EXPECT_EQ(drawn(), "a.txt*<\nb/\nc9\nc10\n");
  press(key::down);
  press(key::right);
  EXPECT_EQ(drawn(), "a.txt\nb/*<\n  inner/\n  one\n  two\nc9\nc10\n");
  press(key::right);
  press(key::end, mod::shift);
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/*\n  one*\n  two*\nc9*\nc10*<\n");
  press(key::page_up);
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/\n  one*<\n  two\nc9\nc10\n");
  press(key::left);
  press(key::left);
  EXPECT_EQ(drawn(), "a.txt\nb/*<\nc9\nc10\n");
  press(u'c');
  press(u'1');
  EXPECT_EQ(drawn(), "a.txt\nb/\nc9\nc10*<\n");
  // What is typed after another key begins anew.
  press(u'c');
  press(key::up);
  press(u'c');
  EXPECT_EQ(drawn(), "a.txt\nb/\nc9\nc10*<\n");
  desktop.loop().run_for(2);
  press(u'c');
  press(u'c');
  EXPECT_EQ(drawn(), "a.txt\nb/\nc9\nc10*<\n");
  press(u' ');
  press(key::return_key);
  EXPECT_EQ(shown, strings({"c10!"}));  // the blank belongs to what is typed
  desktop.loop().run_for(2);
  press(u' ');
  EXPECT_EQ(shown, strings({"c10!", "c10"}));
  press(key::home);
  press(key::return_key);
  EXPECT_EQ(drawn(), "");
  press(key::escape);
  EXPECT_EQ(text_focused, 2);
}

TEST_F(tree, shows_a_file_by_a_click_and_keeps_it_by_two) {
  open_folder();
  click("a.txt");
  controller.double_click(row_of("a.txt"));
  click("b");
  click("one", mod::command);
  click("c9", mod::command);
  EXPECT_EQ(drawn(), "a.txt\nb/*\n  inner/\n  one*\n  two\nc9*<\nc10\n");
  EXPECT_EQ(shown, strings({"a.txt", "a.txt!"}));
  // What is in something selected is meant with it.
  perform("projectCopyRelativePath:");
  EXPECT_EQ(desktop.general_pasteboard().get("text").string_or(""), "b\nc9");
  click("two", mod::shift);
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/\n  one\n  two*<\nc9*\nc10\n");
}

TEST_F(tree, pales_what_the_repository_ignores) {
  fs::create_directory(folder / ".git");
  folder.write(".gitignore", "*9\ninner/\n");
  folder.write("b/.gitignore", "two\n");
  open_folder();
  for (char const* name : {"b", "inner"}) click(name);
  auto const pale = [this] {
    std::string titles;
    for (std::size_t n = 0; n < controller.count(); ++n)
      if (controller.row(n).is_pale) titles += controller.row(n).title + " ";
    return titles;
  };
  EXPECT_EQ(pale(), "inner deep two c9 ");
  // What is known already is looked at anew when its folder changes.
  fs::remove(folder / ".gitignore");
  perform("projectRefresh:");
  EXPECT_EQ(pale(), "two ");
}

TEST_F(tree, makes_renames_and_duplicates) {
  open_folder();
  select("b");
  perform("projectNewFile:");
  EXPECT_EQ(edited, ":0");
  EXPECT_EQ(drawn(), "a.txt\nb/*<\n  \n  inner/\n  one\n  two\nc9\nc10\n");
  for (char const* wrong : {"", ".", "..", "x/y", "one"})
    EXPECT_NE(controller.fault_of_title(wrong), "") << wrong;
  name("new.c");
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/\n  new.c*<\n  one\n  two\nc9\nc10\n");
  EXPECT_EQ(shown, strings({"new.c!"}));
  perform("projectRename:");
  EXPECT_EQ(edited, "new.c:3");
  EXPECT_EQ(controller.edited_row(), row_of("new.c"));
  name("z.c");
  EXPECT_EQ(moved, strings({"new.c b/z.c"}));
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/\n  one\n  two\n  z.c*<\nc9\nc10\n");
  // An open folder stays open, and is watched under its new name.
  select("b");
  perform("projectRename:");
  name("d");
  EXPECT_EQ(drawn(), "a.txt\nc9\nc10\nd/*<\n  inner/\n  one\n  two\n  z.c\n");
  perform("projectDuplicateFiles:");
  EXPECT_EQ(folder.read(folder / "d copy/inner/deep"), "b/inner/deep");
  select("a.txt");
  perform("projectDuplicateFiles:");
  perform("projectDuplicateFiles:");
  EXPECT_TRUE(fs::exists(folder / "a copy.txt") && fs::exists(folder / "a copy copy.txt"));

  // Another program is first.
  select("c9");
  perform("projectRename:");
  folder.write("late", "theirs");
  name("late");
  EXPECT_EQ(folder.read(folder / "late"), "theirs");
  ASSERT_FALSE(desktop.alerts().shown.empty());
  EXPECT_EQ(desktop.alerts().shown.back().title,
            "The name of “c9” could not be changed to “late”.");
}

TEST_F(tree, moves_to_the_trash_what_is_selected) {
  open_folder();
  desktop.alerts().answer("Do you want to move 2 items to the trash?", "Move to Trash");
  select("b");
  select("c9", mod::shift);
  press(key::forward_delete);
  EXPECT_EQ(drawn(), "a.txt\nc10*<\n");
  EXPECT_EQ(removals, 2);
  EXPECT_EQ(folder.read(outside / "data/Trash/files/b/inner/deep"), "b/inner/deep");
  // A second one of the name, with bytes that need to be written otherwise.
  std::string const odd = folder / "b%\xff";
  for (int n = 0; n < 2; ++n) {
    std::ofstream(odd) << n;
    EXPECT_FALSE(projects::move_to_trash(odd));
  }
  EXPECT_EQ(folder.read(outside / "data/Trash/files/b%\xff.2"), "1");
  EXPECT_EQ(folder.read(outside / "data/Trash/info/b%\xff.2.trashinfo")
                .find("[Trash Info]\nPath=" + folder.path() + "/b%25%FF\nDeletionDate=2"),
            0u);
  EXPECT_TRUE(projects::move_to_trash(folder / "none"));
}

TEST_F(tree, takes_drops) {
  open_folder();
  click("b");
  outside.write("new", "outside");
  select("one");
  desktop.alerts().answer("Do you want to move “one” to “inner”?", "Move");
  EXPECT_EQ(drop("two", drop_place::on).operation, 0u);  // it is there
  EXPECT_EQ(drop("inner", drop_place::on).operation, platform::drag_operation::generic);
  EXPECT_EQ(moved, strings({"one b/inner/one"}));
  select("b");
  EXPECT_EQ(drop("inner", drop_place::on).operation, 0u);  // into itself
  drop("c9", drop_place::below, {}, true);
  EXPECT_EQ(folder.read(folder / "b copy/inner/one"), "b/one");
  EXPECT_EQ(drop("inner", drop_place::on, strings{outside / "new"}).operation,
            platform::drag_operation::copy);
  EXPECT_EQ(folder.read(folder / "b/inner/new") + folder.read(outside / "new"), "outsideoutside");
  // Cut and pasted.
  select("a.txt");
  perform("cut:");
  select("b copy");
  perform("paste:");
  EXPECT_FALSE(fs::exists(folder / "a.txt"));
  EXPECT_EQ(folder.read(folder / "b copy/a.txt"), "a.txt");
}

TEST_F(tree, holds_groups_and_references) {
  tree_without_window::tree.add_files({folder / "a.txt", folder / "b", folder / "c9"}, nullptr, 0);
  wait();
  select("a.txt");
  select("c9", mod::command);
  perform("projectGroupFiles:");
  EXPECT_EQ(edited, "New Group:9");
  name("G");
  EXPECT_EQ(drawn(), "G/*<\n  a.txt\n  c9\nb/\n");
  select("b");
  EXPECT_EQ(drop("a.txt", drop_place::below).operation, platform::drag_operation::generic);
  EXPECT_EQ(drawn(), "G/\n  a.txt\n  b/*<\n  c9\n");
  click("b");
  select("inner");
  drop("", drop_place::end);  // a reference to what is in the folder
  EXPECT_EQ(drawn(), "G/\n  a.txt\n  b/\n    inner/*<\n    one\n    two\n  c9\ninner/\n");
  drop("G", drop_place::above, strings{folder / "c10", "none"});
  select("G");
  press(key::forward_delete);
  EXPECT_EQ(drawn(), "c10\ninner/*<\n");
  EXPECT_TRUE(fs::exists(folder / "a.txt") && desktop.alerts().shown.empty());
}

TEST_F(tree, selects_a_file_that_has_not_been_read_yet) {
  tree_without_window::tree.add_files({folder.path()}, nullptr, 0);
  EXPECT_TRUE(controller.reveal(folder / "b/inner/deep"));
  wait();
  EXPECT_EQ(drawn(), "a.txt\nb/\n  inner/\n    deep*<\n  one\n  two\nc9\nc10\n");
  EXPECT_FALSE(controller.reveal(outside / "x"));
}

// Selection and keyboard outlast what happens to the files, and rows are those of a plain walk.
TEST_F(tree, follows_random_changes) {
  open_folder();
  std::mt19937 random(20);
  strings const names = {"a", "b", "c", "d", "inner", "e.c"};
  auto const pick = [&](std::size_t n) { return random() % n; };
  auto const path_at = [&](std::size_t depth) {
    fs::path path = folder.path();
    for (; depth > 0; --depth) path /= names[pick(names.size())];
    return path;
  };
  for (int step = 0; step < 250; ++step) {
    std::error_code error;
    fs::path const path = path_at(1 + pick(3)), other = path_at(1 + pick(3));
    switch (pick(10)) {
      case 0:
        std::ofstream(path.string()) << "x";
        break;
      case 1:
        fs::create_directory(path, error);
        break;
      case 2:
        fs::remove_all(path, error);
        break;
      case 3:
        fs::rename(path, other, error);
        break;
      case 4:
        press(u"abcdei"[pick(6)]);
        break;
      case 5:
        perform("projectDuplicateFiles:");
        break;
      default: {
        char16_t const keys[] = {key::up, key::down, key::left, key::right, key::down, key::end};
        press(keys[pick(6)], pick(3) == 0 ? mod::shift : 0);
      }
    }
    tree_without_window::tree.refresh();
    wait();
    std::vector<std::pair<projects::project_item*, std::size_t>> plain;
    std::function<void(projects::item_list const&, std::size_t)> const walk =
        [&](projects::item_list const& items, std::size_t depth) {
          for (auto const& item : items) {
            plain.emplace_back(item.get(), depth);
            if (item->is_expanded) walk(item->children(), depth + 1);
          }
        };
    walk(tree_without_window::tree.roots(), 0);
    ASSERT_EQ(controller.count(), plain.size()) << "step " << step;
    projects::tree_rows rows(tree_without_window::tree.roots());
    std::size_t current = 0;
    strings selected;
    for (std::size_t n = 0; n < plain.size(); ++n) {
      auto const [item, depth] = plain[n];
      auto const place = rows.at(n);
      ASSERT_TRUE(place.item == item && place.depth == depth) << "step " << step;
      ASSERT_EQ(rows.row_of(*item), n);
      std::size_t below = n + 1;
      while (below < plain.size() && plain[below].second > depth) ++below;
      ASSERT_EQ(rows.count_below(n), below - n - 1);
      if (controller.row(n).is_current) ++current;
      projects::project_item* above = item->parent();
      while (above != nullptr && !above->is_selected) above = above->parent();
      if (item->is_selected && above == nullptr) selected.push_back(item->path());
    }
    ASSERT_LE(current, 1u);
    ASSERT_EQ(controller.selectedPaths(), selected) << "step " << step;
    if (step > 20) ASSERT_TRUE(controller.current_row());
  }
}

}  // namespace
