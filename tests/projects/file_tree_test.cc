#include "projects/file_tree.h"

#include <thread>

#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "plist/key_order.h"
#include "regex/WynRegEx.h"
#include "settings/store.h"
#include "test.h"

// The tree against the real folder, and both against a plain look at the disk.
namespace {

namespace fs = std::filesystem;
using projects::project_item;

strings names_of(projects::item_list const& items) {
  strings result;
  for (auto const& item : items)
    result.push_back(item->name() + (item->kind() == projects::item_kind::folder ? "/" : "") +
                     (item->is_link ? "@" : "") + (item->is_missing ? "?" : ""));
  return result;
}

bool passes(std::string const& path, char const* key) {
  return regex::isEqualToRegEx(path, settings::store().string(key));
}

// What a folder holds by the standard library and the plain form of the patterns.
strings names_on_disk(std::string const& folder) {
  strings names, result;
  std::error_code error;
  for (auto const& entry : fs::directory_iterator(folder, error))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  plist::SortArrayLexicographically(names);
  for (std::string const& name : names) {
    fs::path const path = fs::path(folder) / name;
    bool const is_folder = fs::is_directory(path, error);
    if (!is_folder && !fs::is_regular_file(path, error)) continue;
    if (!passes(path,
                is_folder ? "WynFolderReferenceFolderPattern" : "WynFolderReferenceFilePattern"))
      continue;
    result.push_back(name + (is_folder ? "/" : "") + (fs::is_symlink(path) ? "@" : ""));
  }
  return result;
}

class file_tree : public testing::Test {
 protected:
  bool wait() {
    auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (tree.is_busy() && std::chrono::steady_clock::now() < end) {
      desktop.loop().run_posted();
      std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    return !tree.is_busy();
  }
  void refresh() {
    bool done = false;
    tree.refresh([&] { done = true; });
    ASSERT_TRUE(wait());
    ASSERT_TRUE(done);
  }
  project_item& root() { return *tree.roots().front(); }
  /// What the tree shows differently from the disk; "" if nothing.
  std::string difference(project_item& folder) {
    if (folder.error() && folder.error()->code == ELOOP) return "";
    auto const shown = names_of(folder.children()), real = names_on_disk(folder.path());
    if (shown != real)
      return folder.path() + ": " + testing::PrintToString(shown) + " instead of " +
             testing::PrintToString(real);
    for (auto const& child : folder.children()) {
      if (child->kind() != projects::item_kind::folder || !child->is_expanded) continue;
      if (auto const inner = difference(*child); !inner.empty()) return inner;
    }
    return "";
  }

  own_defaults const settings_;
  temporary_folder folder;
  headless::headless_desktop desktop;
  projects::file_tree tree{desktop.loop(), desktop.files()};
};

TEST(path_filter, of_the_defaults_is_the_engine_s) {
  own_defaults const settings;
  auto const standard = projects::filter_patterns::standard();
  projects::path_filters const filters(standard);
  strings const parts = {"",        ".",          ".htaccess", ".o",     "o",          ".pyc",
                         "x",       "\n",         "Icon",      "Icon\r", "svn-commit", ".2",
                         ".1",      ".tmp",       "/",         "CVS",    "~",          ".nib",
                         ".app",    ".xcode",     "proj",      "{arch}", "blib",       "_MTN",
                         ".qnproj", ".framework", "\xff"};
  for (std::string const& a : parts)
    for (std::string const& b : parts)
      for (std::string const& c : parts) {
        std::string const path = "/home/.x/a.o/" + a + b + c;
        EXPECT_EQ(filters.files.passes(path), regex::isEqualToRegEx(path, standard.files)) << path;
        EXPECT_EQ(filters.folders.passes(path), regex::isEqualToRegEx(path, standard.folders))
            << path;
      }
}

TEST_F(file_tree, follows_random_changes) {
  std::mt19937 random(15);
  auto const pick = [&](std::size_t n) { return random() % n; };
  strings const names = {"a", "B", "b10", "b9", ".git", "c.o", "d.app", "\xff", "e f", "Z\n"};
  auto const path_at = [&](std::size_t depth) {
    fs::path path = folder.path();
    for (; depth > 0; --depth) path /= names[pick(names.size())];
    return path;
  };
  fs::create_directory(folder / "root");
  tree.add_files({folder.path()}, nullptr, 0);
  tree.set_expanded(root(), true);
  ASSERT_TRUE(wait());
  std::time_t date = 1000000000;
  for (int step = 0; step < 120; ++step) {
    std::error_code error;
    fs::path const path = path_at(1 + pick(3)), other = path_at(1 + pick(3));
    switch (pick(7)) {
      case 0:
      case 1:
        ::close(::open(path.c_str(), O_CREAT | O_WRONLY | O_NONBLOCK, 0644));  // no wait for a pipe
        break;
      case 2:
        fs::create_directory(path, error);
        break;
      case 3:
        fs::remove_all(path, error);
        break;
      case 4:
        fs::rename(path, other, error);
        break;
      case 5:
        fs::create_symlink(other, path, error);
        break;
      default:
        mkfifo(path.c_str(), 0600);
    }
    // Folders that look as if nobody had changed them of late, so that their dates decide.
    if (pick(3) == 0)
      for (auto const& entry : fs::recursive_directory_iterator(folder.path(), error))
        if (entry.is_directory(error) && !entry.is_symlink(error)) {
          timespec const times[2] = {{date, 0}, {date++, 0}};
          utimensat(AT_FDCWD, entry.path().c_str(), times, 0);
        }
    std::vector<project_item*> folders;
    projects::visit_items(tree.roots(), [&](project_item& item) {
      if (item.kind() == projects::item_kind::folder) folders.push_back(&item);
      return true;
    });
    tree.set_expanded(*folders[pick(folders.size())], pick(4) != 0 || folders.size() == 1);
    refresh();
    if (!root().is_expanded) tree.set_expanded(root(), true);
    ASSERT_EQ(difference(root()), "") << "step " << step;
  }
}

TEST_F(file_tree, shows_what_cannot_be_read_as_such) {
  fs::create_directories(folder / "a/locked");
  fs::create_directory_symlink(folder.path(), folder / "a/round");
  folder.write("a/gone", "");
  tree.add_files({folder / "a", folder / "a/gone", folder / "none"}, nullptr, 0);
  fs::permissions(folder / "a/locked", fs::perms::none);
  fs::remove(folder / "a/gone");
  tree.set_expanded(root(), true);
  ASSERT_TRUE(wait());
  EXPECT_EQ(names_of(root().children()), strings({"locked/", "round/@"}));
  for (auto const& child : root().children()) tree.set_expanded(*child, true);
  refresh();
  EXPECT_EQ(names_of(tree.roots()), strings({"a/", "gone?"}));
  if (geteuid() != 0) EXPECT_EQ(root().children()[0]->error()->code, EACCES);
  EXPECT_EQ(root().children()[1]->error()->code, ELOOP);
  fs::permissions(folder / "a/locked", fs::perms::owner_all);
  fs::remove_all(folder / "a");
  refresh();
  EXPECT_EQ(names_of(tree.roots()), strings({"a/?", "gone?"}));
  EXPECT_TRUE(root().children().empty());
  fs::create_directory(folder / "a");
  folder.write("a/gone", "");
  refresh();
  EXPECT_EQ(names_of(tree.roots()), strings({"a/", "gone"}));
  EXPECT_EQ(names_of(root().children()), strings({"gone"}));
}

TEST_F(file_tree, keeps_unsaved_files_that_were_deleted) {
  for (char const* name : {"a", "b", "c"}) folder.write(name, name);
  tree.unsaved_files = [this] { return strings{folder / "b", folder / "x/y"}; };
  tree.add_files({folder.path()}, nullptr, 0);
  tree.set_expanded(root(), true);
  ASSERT_TRUE(wait());
  fs::remove(folder / "b");
  fs::remove(folder / "c");
  refresh();
  EXPECT_EQ(names_of(root().children()), strings({"a", "b?"}));
  folder.write("b", "again");
  refresh();
  EXPECT_EQ(names_of(root().children()), strings({"a", "b"}));
}

TEST_F(file_tree, knows_files_before_it_has_read_them) {
  fs::create_directories(folder / "a/b/.git");
  for (char const* name : {"a/f", "a/b/f", "a/b/f.o", "a/b/.git/f", "g"}) folder.write(name, "");
  auto& group = tree.add_group("G", nullptr, 0);
  tree.add_files({folder / "a"}, &group, 0);
  struct row {
    char const* path;
    bool is_there;
  };
  for (auto const& [path, is_there] : {row{"a/f", true},
                                       {"a/b/f", true},
                                       {"a/b/f.o", false},
                                       {"a/b/.git/f", false},
                                       {"g", false},
                                       {"a/b", false},
                                       {"a", false},
                                       {"a/b/none", false},
                                       {"ab", false}})
    EXPECT_EQ(tree.holds_file(folder / path), is_there) << path;
  EXPECT_EQ(tree.item_with_path(folder / "a/b"), nullptr);
  tree.read(*group.children().front());
  ASSERT_TRUE(wait());
  ASSERT_NE(tree.item_with_path(folder / "a/b"), nullptr);

  auto& other = tree.add_group("H", &group, 1);
  tree.move({group.children().front().get()}, &other, 0);
  EXPECT_EQ(names_of(other.children()), strings({"a/"}));
  tree.move({&group}, &other, 0);  // into itself
  EXPECT_EQ(names_of(tree.roots()), strings({"G"}));
  tree.remove(other);
  EXPECT_TRUE(group.children().empty());
}

TEST_F(file_tree, can_go_while_it_is_read) {
  for (int n = 0; n < 300; ++n) folder.write(std::to_string(n), "");
  for (int n = 0; n < 20; ++n) {
    projects::file_tree other(desktop.loop(), desktop.files());
    other.add_files({folder.path(), folder.path()}, nullptr, 0);
    other.read(*other.roots().front());
    if (n % 2) other.remove(*other.roots().front());
    desktop.loop().run_posted();
  }
  desktop.loop().run_posted();
}

strings walked(std::vector<projects::walk_root> roots, projects::walk_options const& options,
               std::string const& folder) {
  projects::file_walk walk(std::move(roots), options);
  strings result;
  for (std::string path; walk.next(path);) result.push_back(path.substr(folder.size() + 1));
  return result;
}

TEST(file_walk, finds_each_file_once) {
  temporary_folder folder, outside;
  fs::create_directories(folder / "a/b");
  fs::create_directories(outside / "o");
  for (char const* name : {"a/1.c", "a/2.h", "a/10.c", "a/b/1.c", "a/.hidden", "z"})
    folder.write(name, "");
  outside.write("o/x", "");
  fs::create_directory_symlink(folder / "a", folder / "a/b/up");
  fs::create_directory_symlink("..", folder / "a/b/up2");
  fs::create_directory_symlink(outside / "o", folder / "o1");
  fs::create_directory_symlink(outside.path(), folder / "o2");
  fs::create_directory_symlink(outside / "o", outside / "o/self");
  projects::walk_root const all{folder.path(), true, {"!/\\.[^/]*$", ""}};
  projects::walk_root const one{folder / "a/b/1.c", false, {}};
  EXPECT_EQ(walked({all}, {}, folder.path()),
            strings({"a/1.c", "a/2.h", "a/10.c", "a/b/1.c", "o1/x", "z"}));
  EXPECT_EQ(walked({one, all, one}, {.included = {"*.c"}, .excluded = {"10.*"}}, folder.path()),
            strings({"a/b/1.c", "a/1.c"}));
  EXPECT_EQ(walked({all}, {.included = {}, .excluded = {"b", "o*"}}, folder.path()),
            strings({"a/1.c", "a/2.h", "a/10.c", "z"}));
}

// Of git's own words for which files it would take.
TEST(ignore_rules, are_those_of_git) {
  temporary_folder folder;
  std::string const quiet = " >/dev/null 2>&1";
  std::string const git = "cd " + folder.path() + " && HOME=" + folder.path() + " git ";
  if (std::system((git + "init" + quiet).c_str()) != 0) GTEST_SKIP() << "there is no git";
  strings const names = {"a", "b", "ab", "a.o", "b.c", "[x]", "a b", "!a", "#a"};
  for (std::string const& top : names)
    for (std::string const& middle : names) {
      fs::create_directories(folder / (top + "d/" + middle + "d"));
      for (char const* name : {"a", "b.c", "[x]", "a b", "!a", "#a"})
        folder.write(top + "d/" + middle + "d/" + name, "");
      folder.write(top + "d/" + middle, "");
    }
  strings const lines = {"a",       "*.o",     "/ad",  "bd/",  "!b.c",  "ad/*/a", "**/abd",
                         "bd/**",   "ad/**/a", "\\!a", "\\#a", "# a",   "[a-b]d", "[!a]d/",
                         "\\[x\\]", "a\\ b",   "a b ", "*/a",  "!/ad/", "**",     "!**/",
                         "?d",      "a*d/*.c", "[x",   "/*",   "!/bd",  "ad/bd/", "[]x]d"};
  std::mt19937 random(3);
  for (int n = 0; n < 20; ++n) {
    std::string text, inner;
    for (auto count = 1 + random() % 4; count > 0; --count)
      text += lines[random() % lines.size()] + "\n";
    if (random() % 2) inner = lines[random() % lines.size()];
    folder.write(".gitignore", text);
    folder.write("ad/.gitignore", inner + "\r\n");
    ASSERT_EQ(std::system((git + "ls-files -z --others --exclude-standard >.list").c_str()), 0);
    strings real;
    std::istringstream list(folder.read(folder / ".list"));
    for (std::string name; std::getline(list, name, '\0');)
      if (!name.starts_with('.') && name != "ad/.gitignore") real.push_back(name);
    auto found = walked({{folder.path(), true, {"!/\\.[^/]*$", "!/\\.[^/]*$"}}},
                        {.included = {}, .excluded = {}, .honours_gitignore = true}, folder.path());
    std::sort(real.begin(), real.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, real) << text << "--- " << inner;
  }
}

}  // namespace
