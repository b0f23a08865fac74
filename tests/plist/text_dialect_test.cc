#include "data_rows.h"
#include "plist/key_order.h"
#include "plist/text_reader.h"
#include "plist/text_writer.h"
#include "plist/xml_reader.h"
#include "random_values.h"

namespace {

using plist::value;

TEST(text_dialect, reading) {
  for (auto const& c : data_rows("property_lists.txt", "reading")) {
    plist::dictionary error;
    auto const expected = plist::read_xml("<plist>" + c[1] + "</plist>");
    EXPECT_EQ(plist::convert(c[0], &error), expected.value) << c[0] << value(error);
    EXPECT_TRUE(error.empty() && !expected.error) << c[0];
  }
}

TEST(text_dialect, errors_carry_line_and_column) {
  for (auto const& c : data_rows("property_lists.txt", "errors")) {
    plist::dictionary error{{"old", 1}};
    EXPECT_FALSE(plist::convert(c[0], &error)) << c[0];
    EXPECT_EQ(error["line"], value(std::stoi(c[1]))) << c[0];
    EXPECT_EQ(error["column"], value(std::stoi(c[2]))) << c[0];
    EXPECT_NE(error["info"].string_or(""), "") << c[0];
    EXPECT_EQ(error.size(), 3u) << c[0];
    EXPECT_FALSE(plist::convert(c[0])) << c[0];
  }
}

TEST(text_dialect, messages_name_tokens_as_users_know_them) {
  auto const info = [](char const* text) {
    plist::dictionary error;
    plist::convert(std::string_view(text), &error);
    return error["info"].string_or("");
  };
  EXPECT_EQ(info("{ a = 1 }"), "line 1:9: expecting ';', found '}'");
  EXPECT_EQ(info("1 2"), "line 1:3: expecting EOF, found '2'");
}

TEST(text_dialect, depth_and_length_take_no_stack) {
  std::string const open(plist::max_depth, '('), close(plist::max_depth, ')');
  EXPECT_EQ(plist::convert(open + "a" + close), random_values::nested(plist::max_depth, "a"));
  plist::dictionary error;
  EXPECT_FALSE(plist::convert(repeated("{a=(", 150'000), &error));
  EXPECT_EQ(error["info"].string_or(""), "line 1:1025: nested too deeply");

  std::string const flat = "(" + repeated("a,", 100'000);
  EXPECT_FALSE(plist::convert(flat, &error));
  EXPECT_EQ(plist::convert(flat + ")").elements().size(), 100'000u);
}

TEST(text_dialect, layout) {
  for (auto const& c : data_rows("property_lists.txt", "layout")) {
    value const v = plist::convert(c[0]);
    EXPECT_EQ(plist::PrettyPrintPList(v), c[1]);
    EXPECT_EQ(c[1].find('\n') == std::string::npos, plist::plistFitsSingleLine(v)) << c[0];
  }
  // What the text dialect has no form of.
  EXPECT_EQ(plist::PrettyPrintPList(plist::dictionary{{"", 1}}), "{\t = 1; }");
  EXPECT_EQ(plist::PrettyPrintPList(plist::array{true, 0.5}), "(\n\t1,\n\t0.5,\n)");
  EXPECT_EQ(plist::PrettyPrintPList(plist::date{0}), "2001-01-01 00:00:00 +0000");
  value const pair = plist::dictionary{{"a", 1}, {"b", 2}};
  EXPECT_EQ(plist::stringWithIndentIsKeyIsSingleLine(pair, 2, true, false),
            "{\n\t\t\ta = 1;\n\t\t\tb = 2;\n\t\t}");
}

TEST(text_dialect, quoting) {
  for (auto const& c : data_rows("property_lists.txt", "quoting")) {
    EXPECT_EQ(plist::PrettyPrintString(c[0]), c[1]);
    EXPECT_EQ(plist::PrettyPrintKey(c[0]), c[2]);
    EXPECT_EQ(plist::convert(c[1]), value(c[0])) << c[1];
  }
}

TEST(text_dialect, random_values_survive) {
  rc::check([] {
    value const v = random_values::value({.only_text_dialect = true});
    std::string const text = plist::PrettyPrintPList(v);
    plist::dictionary error;
    value const read = plist::convert(text, &error);
    RC_LOG() << text << "\n" << plist::PrettyPrintPList(error);
    RC_ASSERT(read == v);
    RC_ASSERT(plist::PrettyPrintPList(read) == text);
  });
}

TEST(text_dialect, deep_values_print_without_deep_stack) {
  std::string const text = plist::PrettyPrintPList(random_values::nested(10'000, "x"));
  EXPECT_NE(text.find("<nested too deeply>"), std::string::npos);
}

TEST(text_dialect, key_order) {
  plist::dictionary entries;
  for (auto const* key : {"patterns", "name", "capture10", "capture2",  "beta", "Alpha", "alpha2",
                          "alpha 1",  "endX", "end",       "begin",     "zeta", "été",   "etf",
                          "ete",      "_x",   "x",         "fileTypes", "1",    "10",    "2"})
    entries.emplace(key, 1);
  EXPECT_EQ(plist::KeySortedArray(entries),
            (std::vector<std::string>{
                "name",      "fileTypes", "begin", "end",     "patterns", "_x",   "1",
                "2",         "10",        "Alpha", "alpha 1", "alpha2",   "beta", "capture2",
                "capture10", "endX",      "ete",   "été",     "etf",      "x",    "zeta"}));
  std::vector<std::string> equal = {"b", "A", "a", "Ａ", "B"};
  plist::SortArrayLexicographically(equal);
  EXPECT_EQ(equal, (std::vector<std::string>{"A", "a", "Ａ", "b", "B"}));
}

}  // namespace
