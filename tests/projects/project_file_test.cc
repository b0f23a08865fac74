#include "projects/project_file.h"

#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "plist/text_reader.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"
#include "projects/text_files.h"
#include "settings/store.h"
#include "test.h"

namespace {

namespace fs = std::filesystem;
using projects::project_contents_of;

plist::value read_text(char const* text) {
  plist::value const value = plist::convert(text);
  EXPECT_TRUE(value) << text;
  return value;
}

// What is written again of what was read.
plist::dictionary again(plist::value const& file, std::string const& from, std::string const& to) {
  auto const contents = project_contents_of(file, from);
  return projects::project_value(contents, contents.items, from, to);
}

TEST(relative_path, leads_from_the_folder) {
  struct row {
    char const *path, *folder, *relative;
  };
  for (auto const& [path, folder, relative] : {row{"/a/b/c", "/a/b", "c"},
                                               {"/a/b", "/a/b", "."},
                                               {"/a/x", "/a/b/c", "../../x"},
                                               {"/a", "/a/b", ".."},
                                               {"/x/y", "/a/b", "/x/y"},
                                               {"/", "/a", "/"},
                                               {"/a", "/", "/a"},
                                               {"/ab/c", "/a/c", "/ab/c"},
                                               {"/a/bc", "/a/b", "../bc"}})
    EXPECT_EQ(projects::relative_path(path, folder), relative) << path << " from " << folder;
}

TEST(project_file, says_the_same_when_it_is_written_again) {
  plist::value const file = read_text(R"({
    documents = (
      { filename = 'a.c'; selected = 1; }, { filename = '../up/b'; },
      { filename = '/etc/hosts'; saveAsAbsolutePath = 1; },
      { name = 'Group'; expanded = 1; children = (
          { filename = 'sub/c'; }, { name = 'Empty'; children = (); } ); },
      { sourceDirectory = '.'; name = 'All of it'; regexFolderFilter = '!x'; expanded = 1; },
      { sourceDirectory = 'src'; name = 'src'; regexFileFilter = 'c$'; } );
    metaData = { 'a.c' = { caret = { line = 3; column = 1; }; }; '/etc/hosts' = {}; };
    openDocuments = ( 'a.c', '/etc/hosts' ); currentDocument = 'a.c';
    windowFrame = '{{1, 2}, {3, 4}}'; showFileHierarchyDrawer = 1; fileHierarchyDrawerWidth = 200;
    shellVariables = ( { variable = 'X'; value = 'y'; enabled = 1; } );
  })");
  auto const once = again(file, "/home/me/p", "/home/me/p");
  EXPECT_EQ(again(once, "/home/me/p", "/home/me/p"), once);
  for (char const* key : {"metaData", "openDocuments", "currentDocument", "windowFrame",
                          "shellVariables", "fileHierarchyDrawerWidth"})
    EXPECT_EQ(once.at(key), file[key]) << key;
  auto const& documents = once.at("documents").elements();
  ASSERT_EQ(documents.size(), 6u);
  for (std::size_t n = 0; n < documents.size(); ++n)
    for (auto const& [key, value] : file["documents"].elements()[n].entries())
      if (key != "children")
        EXPECT_EQ(documents[n][key].string_or("?"), value.string_or("")) << n << key;

  // With its folder it moves but for what is absolute, and saved elsewhere it leads to the same.
  EXPECT_EQ(again(file, "/mnt/q", "/mnt/q"), once);
  auto const moved = project_contents_of(file, "/mnt/q");
  EXPECT_EQ(moved.items[1]->path(), "/mnt/up/b");
  EXPECT_EQ(moved.items[2]->path(), "/etc/hosts");
  auto const saved = again(file, "/home/me/p", "/home/me/other/place");
  EXPECT_EQ(project_contents_of(saved, "/home/me/other/place").items[3]->children()[0]->path(),
            "/home/me/p/sub/c");
}

TEST(project_file, takes_what_is_wrong_for_missing) {
  plist::value const file = read_text(R"({
    documents = ( 'a', 3, (), {}, { filename = (); }, { filename = ''; }, { filename = 'ok'; lastUsed
    = 'never'; children = ( { filename = 'x'; } ); }, { name = ''; }, { sourceDirectory = {}; },
    { name = 'G'; children = 'none'; }, { sourceDirectory = 'f'; regexFilter = 'old'; } );
    metaData = ( 'a' ); openDocuments = { a = 'b'; }; currentDocument = ( 'x' );
    windowFrame = ( 1 ); shellVariables = ( 'X', { variable = 'A'; } );
  })");
  auto const contents = project_contents_of(file, "/p");
  ASSERT_EQ(contents.items.size(), 3u);
  EXPECT_EQ(contents.items[0]->path(), "/p/ok");
  EXPECT_EQ(contents.items[1]->name(), "G");
  EXPECT_EQ(contents.items[2]->own()->file_pattern, "old");
  EXPECT_TRUE(contents.meta_data.empty() && contents.open_documents.empty());
  EXPECT_TRUE(contents.current_document.empty() && contents.window_frame.empty());
  EXPECT_EQ(contents.variables.size(), 1u);
  for (plist::value const& other :
       {plist::value(), plist::value("x"), plist::value(plist::array{})})
    EXPECT_TRUE(project_contents_of(other, "/p").items.empty());
}

TEST(project_file, holds_any_name_and_any_number_of_them) {
  projects::project_contents contents;
  for (char const* name : {"/p/\xff", "/p/a\nb", "/p/\x01", "/p/\xEF\xBF\xBF", "/p/~", "/p/ "})
    contents.open_documents.push_back(name);
  contents.meta_data["/p/\xff"] = plist::dictionary{};
  for (int n = 0; n < 20000; ++n)
    contents.items.push_back(std::make_unique<projects::project_item>(
        projects::item_kind::file, "x",
        projects::reference{
            .path = "/p/x", .file_pattern = {}, .folder_pattern = {}, .last_used = {}}));
  auto const value = projects::project_value(contents, contents.items, "/p", "/p");
  auto const written = plist::write_xml(value);
  ASSERT_FALSE(written.error) << *written.error;
  auto const read = project_contents_of(plist::read_xml(written.text).value, "/p");
  EXPECT_EQ(read.open_documents, contents.open_documents);
  EXPECT_EQ(read.items.size(), contents.items.size());
}

TEST(project_file, is_replaced_whole_and_keeps_its_attributes) {
  temporary_folder folder;
  std::string const path = folder / "p.qnproj";
  std::optional<path::file_version> version;
  plist::dictionary const value = {{"documents", plist::array{}}};
  ASSERT_FALSE(projects::write_project_file(path, value, path::known_file{}, version));
  fs::permissions(path, fs::perms(0640));
  setxattr(path.c_str(), "user.mine", "x", 1, 0);
  auto const known = path::known_file{version, std::nullopt};
  ASSERT_FALSE(projects::write_project_file(path, value, known, version));
  EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
  EXPECT_EQ(folder.names(), std::set<std::string>({"p.qnproj"}));

  auto const stale = version;
  folder.write("p.qnproj", "another program's");
  auto const failure =
      projects::write_project_file(path, value, path::known_file{stale, std::nullopt}, version);
  ASSERT_TRUE(failure);
  EXPECT_TRUE(failure->changed);
  EXPECT_EQ(folder.read(path), "another program's");
  EXPECT_TRUE(projects::read_project_file(path).error);

  // Cut short it is refused, with the place.
  std::string const whole = plist::write_xml(value).text;
  for (std::size_t size = 1; size + 1 < whole.size(); size += 7) {
    folder.write("p.qnproj", whole.substr(0, size));
    EXPECT_TRUE(projects::read_project_file(path).error) << size;
  }
  fs::create_hard_link(folder.write("p.qnproj", whole), folder / "same");
  ASSERT_FALSE(projects::write_project_file(path, value, std::nullopt, version));
  EXPECT_EQ(fs::hard_link_count(path), 2u);
  EXPECT_FALSE(projects::read_project_file(folder / "none.qnproj").error);
}

TEST(text_files, are_told_by_their_names_and_then_by_what_they_hold) {
  own_defaults const settings;
  temporary_folder folder;
  std::string const page(projects::text_head - 1, 'x');
  struct row {
    char const* name;
    std::string content;
    bool is_text;
  };
  auto const rules = [] { return projects::text_file_rules::standard({"c"}); };
  for (auto const& [name, content, is_text] :
       {row{"a.PNG", "text", false},
        {"a.c", std::string(3, '\0'), true},
        {"empty", "", true},
        {"tabs", "\t\r\n\x7f", true},
        {"escape", "\x1b[m", false},
        {"nul", {"a\0b", 3}, false},
        {"utf8", "\xc3\xa9\xf0\x9f\x98\x80", true},
        {"latin1", "\xe9t\xe9", false},
        {"utf16", "\xff\xfe\x61", false},
        {"cut", "\xc3", false},
        {"cut.deep", page + "\xc3\xa9", true},
        {"late", page + "xx\x01", true},
        {"early", page + "\x01", false},
        {".png", "x", true},
        {"long", "\xf8\x88\x80\x80\x80 \xfc\x84\x80\x80\x80\x80", true}})
    EXPECT_EQ(projects::can_open_file(folder.write(name, content), rules()), is_text) << name;
  EXPECT_FALSE(projects::can_open_file("", rules()));
  EXPECT_FALSE(projects::can_open_file(folder / "none", rules()));
  EXPECT_FALSE(projects::can_open_file(folder.path(), rules()));

  // What has changed is looked at once more.
  std::string const path = folder.write("changes", "text");
  EXPECT_TRUE(projects::can_open_file(path, rules()));
  folder.write("changes", std::string(5, '\1'));
  EXPECT_FALSE(projects::can_open_file(path, rules()));
}

TEST(text_files, toggling_learns_both_ways) {
  own_defaults const settings;
  temporary_folder folder;
  auto const rules = [] { return projects::text_file_rules::standard({"c"}); };
  for (char const* name : {"x.png", "x.c", "x.txt", "x.bin", "x.TIFF"}) {
    std::string const path = folder.write(name, name == std::string("x.bin") ? "\1" : "text");
    bool const opens = projects::can_open_file(path, rules());
    for (int n = 1; n <= 4; ++n) {
      projects::toggle_treated_as_text(path, rules());
      EXPECT_EQ(projects::can_open_file(path, rules()), opens == (n % 2 == 0)) << name << n;
    }
    projects::learn_to_open(path, rules());
    EXPECT_TRUE(projects::can_open_file(path, rules())) << name;
  }
  auto const before = settings::store().array("WynProjectTextFiles");
  projects::toggle_treated_as_text(folder.write("none", "\1"), rules());
  EXPECT_EQ(settings::store().array("WynProjectTextFiles"), before);
}

}  // namespace
