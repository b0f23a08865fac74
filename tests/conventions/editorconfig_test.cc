#include "conventions/editorconfig.h"

#include <sys/stat.h>

#include "conventions/declared.h"
#include "conventions/editorconfig_glob.h"
#include "data_rows.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "settings/store.h"

namespace {

strings words_of(std::string const& text) {
  std::istringstream in(text);
  return {std::istream_iterator<std::string>(in), {}};
}

std::string shown(conventions::properties const& properties) {
  std::string result;
  for (auto const& [name, value] : properties)
    result += (result.empty() ? "" : " ") + name + "=" + value;
  return result;
}

TEST(editorconfig, headings_name_files) {
  for (auto const& row : data_rows("editorconfig.txt", "globs"))
    for (std::size_t field : {1, 2})
      for (std::string const& path : words_of(row.at(field)))
        EXPECT_EQ(conventions::editorconfig_glob_matches(row[0], path), field == 1)
            << row[0] << " " << path;
}

TEST(editorconfig, a_file_gives_properties) {
  temporary_folder const folder;
  for (auto const& row : data_rows("editorconfig.txt", "properties")) {
    folder.write(".editorconfig", "root = true\n" + row[0]);
    if (row[0].starts_with("\xEF")) folder.write(".editorconfig", row[0]);
    EXPECT_EQ(shown(conventions::editorconfig_properties(folder / row[1])), row[2]) << row[0];
  }
}

TEST(editorconfig, the_nearest_file_wins_up_to_the_root) {
  temporary_folder const folder;
  std::filesystem::create_directories(folder / "a/b/c");
  folder.write(".editorconfig",
               "root=TRUE\n[*]\nfar = 1\nmiddle = 1\nnear = 1\n[a/b/c/*.c]\nd = 1\n");
  folder.write("a/.editorconfig", "[*]\nmiddle = 2\nnear = 2\n[c/**]\nno = 1\n[/b/**]\nyes = 1\n");
  folder.write("a/b/c/.editorconfig", "[*]\nroot = true\nnear = unset\n");
  std::string const file = folder / "a/b/c/x.c";
  EXPECT_EQ(shown(conventions::editorconfig_properties(file)),
            "d=1 far=1 middle=2 root=true yes=1");
  folder.write("a/.editorconfig", "root = true\n[*]\nmiddle = 2\n");
  EXPECT_EQ(shown(conventions::editorconfig_properties(file)), "middle=2 root=true");
}

// None of these may take long, be waited for or end the program.
TEST(editorconfig, hostile_files_are_bounded) {
  temporary_folder const folder;
  std::string const file = folder / "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa.c";
  auto const says = [&](std::string const& text) {
    folder.write(".editorconfig", "root = true\n" + text);
    return shown(conventions::editorconfig_properties(file));
  };
  std::string const last = "]\nx = 1\n[*.c]\ny = 1\n";
  for (std::string const& glob :
       {repeated("*a", 2000), repeated("{a,b", 1300), repeated("{", 4000), repeated("[", 4000),
        repeated("{a,{", 900) + repeated("}}", 900), repeated("{*,**}", 600) + "x",
        repeated("{0..9}", 600), repeated("a", 5000), std::string("{1..99999999999999999999}")})
    EXPECT_EQ(says("[" + glob + last), "y=1") << glob.substr(0, 10);
  EXPECT_EQ(says(repeated("[*a*a*a*b]\nx = 1\n", 7000) + "[*]\ny = 1\n"), "y=1");
  EXPECT_EQ(says("[*]\n" + std::string(2000, 'n') + " = 1\ny = 1\nz = " + std::string(5000, 'v')),
            "y=1");
  EXPECT_EQ(says("[*]\nx = 1\n" + std::string(conventions::largest_editorconfig, '#')), "");
  EXPECT_EQ(says(std::string("[*]\nx = \0\xFF\n[\xFF*]\ny = 1\n", 23)).substr(0, 2), "x=");
  std::filesystem::remove(folder / ".editorconfig");
  ASSERT_EQ(mkfifo((folder / ".editorconfig").c_str(), 0600), 0);
  conventions::editorconfig_properties(file);
}

TEST(editorconfig, known_values_become_what_is_declared) {
  own_defaults const defaults;
  temporary_folder const folder;
  folder.write(".editorconfig",
               "root = true\n[*]\nindent_style = Space\nindent_size = 3\ncharset = UTF-8-BOM\n"
               "end_of_line = CRLF\ntrim_trailing_whitespace = true\ninsert_final_newline = false\n"
               "[*.bad]\nindent_style = x\nindent_size = 0\ntab_width = 65\ncharset = x\n"
               "end_of_line = lfcr\ntrim_trailing_whitespace = 1\ninsert_final_newline = no\n");
  auto const good = conventions::declared_for(folder / "a");
  EXPECT_EQ(good.indentation, (conventions::indentation{true, 3, 3}));
  EXPECT_EQ(good.charset, encoding::UTF8);
  EXPECT_EQ(good.byte_order_mark, true);
  EXPECT_EQ(good.line_ending, line_ending::CRLF);
  EXPECT_EQ(good.trim_trailing_blanks, true);
  EXPECT_EQ(good.final_newline, false);
  EXPECT_EQ(conventions::declared_for(folder / "a.bad"), conventions::declared());
  settings::store().set("WynFollowEditorConfig", false);
  EXPECT_EQ(conventions::declared_for(folder / "a"), conventions::declared());
}

}  // namespace
