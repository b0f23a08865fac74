#include "commands/link_places.h"
#include "commands/output_results.h"
#include "data_rows.h"
#include "path/temporary_folder.h"
#include "platform/system/percent_encoding.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

namespace {

using commands::output_place;

TEST(output_places, in_the_output_of_tools) {
  std::set<std::string> files;
  for (data_row const& row : data_rows("output_places.txt", "files"))
    files.insert(row.begin(), row.end());
  for (data_row const& row : data_rows("output_places.txt", "lines")) {
    SCOPED_TRACE(row[0]);
    auto const place = commands::place_in_line(
        row[0], [&](std::string const& name) { return files.contains(name); });
    ASSERT_EQ(place.has_value(), row.size() > 1);
    if (!place) continue;
    EXPECT_EQ(place->file, row[1]);
    EXPECT_EQ(std::to_string(place->line), row[2]);
    EXPECT_EQ(std::to_string(place->column), row[3]);
    EXPECT_EQ(row[0].substr(place->first, place->last - place->first), row[4]);
  }
}

class places_on_disk : public testing::Test {
 protected:
  places_on_disk() {
    std::filesystem::create_directory(folder / "sub");
    folder.write("a.c", "");
    folder.write("sub/x & y.c", "");
  }

  std::string linked(std::vector<std::string> const& pieces) {
    found.clear();
    commands::link_places links(folder.path(), [this](auto const& each) { found.push_back(each); });
    std::string result;
    for (std::string const& piece : pieces) result += links.put(piece);
    result += links.finish();
    std::string const name = platform::percent_encoded(folder.path(), "/-._~");
    for (std::size_t at = 0; (at = result.find(name, at)) != result.npos;)
      result.replace(at, name.size(), "DIR");
    return result;
  }

  temporary_folder folder;
  std::vector<output_place> found;
};

// However it is cut: what it becomes is made of whole lines.
TEST_F(places_on_disk, become_links_in_pages) {
  std::string const link = "<a href=\"qn-open:?file=DIR/a.c&amp;line=3\">";
  std::string const other = "<a href=\"qn-open:?file=DIR/sub/x%20%26%20y.c&amp;line=2\">";
  std::vector<std::pair<std::string, std::string>> const cases = {
      {"a.c:3: error\nb.c:3: none\n", link + "a.c:3</a>: error\nb.c:3: none\n"},
      {"<pre>a.c:3</pre>", "<pre>" + link + "a.c:3</a></pre>"},
      {"<p>sub/x &amp; y.c:2<br>a.c:3",
       "<p>" + other + "sub/x &amp; y.c:2</a><br>" + link + "a.c:3</a>"},
      {"<b>a.c</b>:3: bold", "<b>" + link + "a.c</a></b>" + link + ":3</a>: bold"},
      {"<a href=x>a.c:3</a>\n", "<a href=x>a.c:3</a>\n"},
      {"<script>a.c:3:\n</script><!-- a.c:3: -->", "<script>a.c:3:\n</script><!-- a.c:3: -->"},
      {"<img alt='a.c:3: > '>", "<img alt='a.c:3: > '>"},
      {"make[1]: Entering directory '" + folder.path() + "/sub'\nx &amp; y.c:2:",
       "make[1]: Entering directory 'DIR/sub'\n" + other + "x &amp; y.c:2</a>:"},
      {"1 < 2 a.c:3 <", "1 < 2 " + link + "a.c:3</a> <"}};
  for (auto const& [html, expected] : cases) {
    SCOPED_TRACE(html);
    EXPECT_EQ(linked({html}), expected);
    std::vector<std::string> bytes;
    for (char const c : html) bytes.emplace_back(1, c);
    EXPECT_EQ(linked(bytes), expected);
  }
}

// Nothing else is touched, and what comes without the end of a line is shown when it is asked for.
TEST_F(places_on_disk, the_rest_of_a_page_is_left_as_it_is) {
  std::mt19937 random(7);
  std::vector<std::string> const parts = {
      "<", ">",     "<!--", "-->", "<script>", "</script>", "'",
      "=", "\"",    "a",    "\n",  "&amp;",    "</",        "<p ",
      "!", "<pre>", "-",    "z:1", "<STYLE>",  "</style",   "\0x"};
  for (int i = 0; i < 2000; ++i) {
    std::string html, shown;
    commands::link_places links(folder.path(), [](auto const&) { ADD_FAILURE(); });
    for (int k = 0; k < 40; ++k) {
      std::string const& part = parts[random() % parts.size()];
      html += part;
      shown += links.put(part);
      if (random() % 8 == 0) shown += links.flush();
    }
    ASSERT_EQ(shown + links.finish(), html) << "round " << i;
  }
}

TEST_F(places_on_disk, are_walked_through) {
  auto& results = commands::output_results::shared();
  results.begin();
  results.take("a.c:1: x\na.c:1: the same\nnothing\nsub/x & y.c:5:2: y\n", folder.path());
  ASSERT_EQ(results.places().size(), 2u);
  EXPECT_EQ(results.previous(), nullptr);
  EXPECT_EQ(results.next()->line, 1u);
  EXPECT_EQ(results.next()->file, folder / "sub/x & y.c");
  EXPECT_EQ(results.next(), nullptr);
  EXPECT_EQ(results.previous()->line, 1u);
  EXPECT_EQ(results.previous(), nullptr);
  results.visit({.file = folder / "sub/x & y.c", .line = 5, .column = 2});
  EXPECT_EQ(results.previous()->line, 1u);
  results.take("nothing", folder.path());
  EXPECT_EQ(results.places().size(), 2u);
  results.take("a.c:7: a later run", folder.path());
  ASSERT_EQ(results.places().size(), 1u);
  EXPECT_EQ(results.next()->line, 7u);
}

TEST(place_urls, come_back_or_are_refused) {
  output_place const place{.file = "/tmp/a b&c=%\xFF\n.c", .line = 3, .column = 9};
  EXPECT_EQ(commands::place_of_url(commands::url_of(place)), place);
  for (char const* url :
       {"http://x/?file=/a", "qn-open:", "qn-open:?file=a.c&line=1", "qn-open:?file=%2",
        "qn-open:?", "qn-open:?file=/a&line=x", "qn-open:?file=/a%00&line=1", "qn-open:?line=1"})
    EXPECT_EQ(commands::place_of_url(url), std::nullopt) << url;
}

}  // namespace
