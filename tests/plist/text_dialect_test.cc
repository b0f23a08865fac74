#include "data_rows.h"
#include "plist/key_order.h"
#include "plist/text_reader.h"
#include "plist/text_writer.h"
#include "plist/xml_reader.h"
#include "random_values.h"
#include "test.h"

namespace {

using plist::value;

plist::array strings(std::initializer_list<char const*> texts) {
  return plist::array(texts.begin(), texts.end());
}

TEST(text_dialect, reading) {
  struct {
    std::string text;
    value v;
  } const cases[] = {
      {"( a, b, )", strings({"a", "b"})},
      {"( a, b )", strings({"a", "b"})},
      {"(a,b)", strings({"a", "b"})},
      {"( )", plist::array{}},
      {"{}", plist::dictionary{}},
      {"{ 12 = x; 012 = y; }", plist::dictionary{{"12", "x"}, {"012", "y"}}},
      {"{ a = 1; a = 2; }", plist::dictionary{{"a", 2}}},
      {"{ 'a' = 1; \"a\" = ( ); }", plist::dictionary{{"a", plist::array{}}}},
      {"'foo2'", "foo2"},
      {"-._aZé", "-._aZé"},
      {"007", 7},
      {"5000000000", 5000000000},
      {"99999999999999999999", INT64_MAX},
      {"{ a = 'it''s'; }", plist::dictionary{{"a", "it's"}}},
      {"''", ""},
      {"\"\"", ""},
      {"''''", "'"},
      {R"('a\')", "a\\"},
      {R"('a\n')", "a\\n"},
      {R"("a\"b")", "a\"b"},
      {R"("a\\")", "a\\"},
      {R"("\\\"")", "\\\""},
      {R"("a\n\'")", "a\\n\\'"},
      {"\"a\\\nb\"", "a\\\nb"},
      {"\"line\r\n\tb\"", "line\r\n\tb"},
      {"// c\n x // d", "x"},
      {"/* 'a' // * / */ x /***/", "x"},
      {"(a,/**/b//\n)", strings({"a", "b"})},
  };
  for (auto const& c : cases) {
    plist::dictionary error;
    EXPECT_EQ(plist::convert(c.text, &error), c.v) << c.text << plist::PrettyPrintPList(error);
    EXPECT_TRUE(error.empty()) << c.text;
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
  std::string deep;
  for (int i = 0; i < 300'000; ++i) deep += i % 2 ? "(" : "{a=";
  plist::dictionary error;
  EXPECT_FALSE(plist::convert(deep, &error));
  EXPECT_EQ(error["info"].string_or(""), "line 1:1025: nested too deeply");

  std::string flat = "(";
  for (int i = 0; i < 100'000; ++i) flat += "a,";
  EXPECT_FALSE(plist::convert(flat, &error));
  EXPECT_EQ(plist::convert(flat + ")").elements().size(), 100'000u);
}

TEST(text_dialect, layout) {
  using plist::array;
  using plist::dictionary;
  struct {
    value v;
    std::string text;
  } const cases[] = {
      {array{}, "( )"},
      {dictionary{}, "{ }"},
      {strings({"a", "b c"}), "( 'a', 'b c' )"},
      {array{1}, "( 1 )"},
      {array{1, 2}, "(\n\t1,\n\t2,\n)"},
      {array{array{1, 2}}, "(\n\t(\n\t\t1,\n\t\t2,\n\t),\n)"},
      {array{array{}, array{}}, "(\n\t( ),\n\t( ),\n)"},
      {dictionary{{"a", "it's"}}, "{\ta = \"it's\"; }"},
      {dictionary{{"a", strings({"x", "y"})}}, "{\ta = ( 'x', 'y' ); }"},
      {dictionary{{"a", array{1, 2}}}, "{\ta = (\n\t\t1,\n\t\t2,\n\t);\n}"},
      {dictionary{{"a", dictionary{{"b", dictionary{}}}}}, "{\ta = { b = { }; }; }"},
      {array{dictionary{{"a", 1}}}, "( { a = 1; } )"},
      {array{dictionary{{"a", 1}}, dictionary{{"b", 2}, {"c", 3}}},
       "(\n\t{\ta = 1; },\n\t{\tb = 2;\n\t\tc = 3;\n\t},\n)"},
      {dictionary{{"captures",
                   dictionary{{"1", dictionary{{"name", "x"}}}, {"2", dictionary{{"name", "y"}}}}},
                  {"match", "\\b(a)(b)"},
                  {"name", "n"}},
       "{\tname = 'n';\n"
       "\tmatch = '\\b(a)(b)';\n"
       "\tcaptures = {\n"
       "\t\t1 = { name = 'x'; };\n"
       "\t\t2 = { name = 'y'; };\n"
       "\t};\n"
       "}"},
      {dictionary{{"patterns", array{dictionary{{"begin", "a"}, {"end", "b"}},
                                     dictionary{{"include", "$self"}}}}},
       "{\tpatterns = (\n"
       "\t\t{\tbegin = 'a';\n"
       "\t\t\tend = 'b';\n"
       "\t\t},\n"
       "\t\t{\tinclude = '$self'; },\n"
       "\t);\n"
       "}"},
      {dictionary{{"", 1}}, "{\t = 1; }"},
      {array{true, 0.5}, "(\n\t1,\n\t0.5,\n)"},
      {plist::date{0}, "2001-01-01 00:00:00 +0000"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(plist::PrettyPrintPList(c.v), c.text);
    EXPECT_EQ(c.text.find('\n') == std::string::npos, plist::plistFitsSingleLine(c.v)) << c.text;
  }
  value const pair = dictionary{{"a", 1}, {"b", 2}};
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
