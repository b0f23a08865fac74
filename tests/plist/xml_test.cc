#include "data_rows.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"
#include "random_values.h"

using namespace std::string_literals;

namespace {

using plist::value;

std::string document(std::string const& content) {
  return "<plist>" + content + "</plist>";
}

value round_trip(value const& v) {
  auto const written = plist::write_xml(v);
  EXPECT_EQ(written.error.value_or(""), "");
  auto const read = plist::read_xml(written.text);
  EXPECT_FALSE(read.error) << read.error->message << "\n" << written.text;
  return read.value;
}

TEST(xml, layout) {
  value const v = plist::dictionary{{"b<", plist::array{1, true, "x & y"}},
                                    {"a", plist::dictionary{}},
                                    {"c", plist::array{}},
                                    {"d", plist::data{1, 2, 3, 4}},
                                    {"e", plist::date{86399}},
                                    {"f", 0.5},
                                    {"g", "\ttwo\r\nlines"}};
  EXPECT_EQ(plist::write_xml(v).text,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>a</key>\n"
            "\t<dict/>\n"
            "\t<key>b&lt;</key>\n"
            "\t<array>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<true/>\n"
            "\t\t<string>x &amp; y</string>\n"
            "\t</array>\n"
            "\t<key>c</key>\n"
            "\t<array/>\n"
            "\t<key>d</key>\n"
            "\t<data>AQIDBA==</data>\n"
            "\t<key>e</key>\n"
            "\t<date>2001-01-01T23:59:59Z</date>\n"
            "\t<key>f</key>\n"
            "\t<real>0.5</real>\n"
            "\t<key>g</key>\n"
            "\t<string>\ttwo&#13;\nlines</string>\n"
            "</dict>\n"
            "</plist>\n");
}

TEST(xml, random_values_survive) {
  rc::check([] {
    value const v = random_values::value({});
    RC_ASSERT(round_trip(v) == v);
  });
}

TEST(xml, extreme_values_survive) {
  constexpr double inf = std::numeric_limits<double>::infinity();
  for (value const& v :
       {value(INT64_MIN), value(INT64_MAX), value(0.0), value(-0.0),
        value(std::numeric_limits<double>::denorm_min()), value(inf), value(-inf), value(0.1),
        value(1e23), value(""), value(" "), value(plist::data(1000, 255)),
        value(plist::date{-0.25}), value(plist::date{-1e-300}), value(plist::date{0.1}),
        value(plist::date{-63113904000.0}), value(plist::date{252423993599.0}),
        value(plist::dictionary{{"", ""}}), random_values::nested(plist::max_depth, "x")})
    EXPECT_EQ(round_trip(v), v);
  EXPECT_TRUE(std::signbit(round_trip(-0.0).real_or(1)));
  EXPECT_TRUE(std::isnan(round_trip(std::nan("")).real_or(0)));
}

TEST(xml, what_cannot_be_held_fails_the_write) {
  struct {
    value v;
    std::string error;
  } const cases[] = {
      {value(), "nothing can't be written"},
      {"\x1B[0m", "a character that XML can't hold"},
      {"\0"s, "a character that XML can't hold"},
      {"\xED\xA0\x80", "a character that XML can't hold"},  // a lone surrogate
      {"\uFFFF", "a character that XML can't hold"},
      {"\xC3", "a character that XML can't hold"},
      {"\xC0\x80", "a character that XML can't hold"},
      {"\xF0\x80\x80\x80", "a character that XML can't hold"},
      {"\xF4\x90\x80\x80", "a character that XML can't hold"},
      {plist::dictionary{{"a", plist::array{1, plist::dictionary{{"\x01", 1}}}}},
       "a[1].\x01: a character that XML can't hold"},
      {plist::date{1e12}, "a date outside of the years 1 to 9999 can't be written"},
      {plist::date{std::nan("")}, "a date outside of the years 1 to 9999 can't be written"},
      {random_values::nested(plist::max_depth + 1, "x"), "nested too deeply"},
      {random_values::nested(100'000, "x"), "nested too deeply"},
  };
  for (auto const& c : cases) {
    auto const written = plist::write_xml(c.v);
    ASSERT_TRUE(written.error);
    EXPECT_TRUE(written.error->ends_with(c.error)) << *written.error;
    EXPECT_LT(written.error->size(), 400u);
    EXPECT_EQ(written.text, "");
  }
}

TEST(xml, forms_that_other_writers_use) {
  struct {
    std::string content;
    value v;
  } const cases[] = {
      {"<true></true>", true},
      {"<integer> +12\n</integer>", 12},
      {"<integer>0xFF</integer>", 255},
      {"<integer>-0x10</integer>", -16},
      {"<real>1</real>", 1.0},
      {"<real>+1.5E3</real>", 1500.0},
      {"<real>-Infinity</real>", -std::numeric_limits<double>::infinity()},
      {"<date>1969-07-20T20:17:40Z</date>", plist::date{-992490140}},
      {"<date>2000-02-29T00:00:00.50Z</date>", plist::date{-26524799.5}},
      {"<data>\n\tAQ\n\tID\n</data>", plist::data{1, 2, 3}},
      {"<data></data>", plist::data{}},
      {"<string/>", ""},
      {"<string>a<![CDATA[<b>]]>&#x1F600;<!-- c -->d</string>", "a<b>😀d"},
      {"<!-- c --><array> <?pi?> <string>x</string></array>", plist::array{"x"}},
      {"<dict><key>a</key><true/><key>a</key><false/></dict>", plist::dictionary{{"a", false}}},
  };
  for (auto const& c : cases) {
    auto const read = plist::read_xml(document(c.content));
    EXPECT_FALSE(read.error) << c.content << ": " << read.error->message;
    EXPECT_EQ(read.value, c.v) << c.content;
  }
  auto const latin = plist::read_xml("<?xml version='1.0' encoding='ISO-8859-1'?>" +
                                     document("<string>\xE9</string>"));
  EXPECT_EQ(latin.value, value("é"));
  auto const wide = "\xFF\xFE<\0p\0l\0i\0s\0t\0>\0<\0t\0r\0u\0e\0/\0>\0<\0/\0p\0l\0i\0s\0t\0>\0"s;
  EXPECT_EQ(plist::read_xml(wide).value, value(true));
}

TEST(xml, errors_say_where_and_why) {
  for (auto const& c : data_rows("property_lists.txt", "xml errors")) {
    auto const read = plist::read_xml(c[0]);
    ASSERT_TRUE(read.error) << c[0];
    EXPECT_EQ(read.error->line, std::stoul(c[1])) << c[0] << ": " << read.error->message;
    EXPECT_EQ(read.error->column, std::stoul(c[2])) << c[0] << ": " << read.error->message;
    EXPECT_NE(read.error->message.find(c[3]), std::string::npos) << read.error->message;
    EXPECT_FALSE(read.value);
  }
}

TEST(xml, hostile_documents_are_refused_cheaply) {
  std::string laughs = "<!DOCTYPE plist [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 30; ++i) {
    std::string const previous = "&a" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY a" + std::to_string(i) + " '" + previous + previous + "'>";
  }
  laughs += "]><plist><string>&a29;</string></plist>";
  EXPECT_NE(plist::read_xml(laughs).error->message.find("must not declare"), std::string::npos);

  EXPECT_EQ(plist::read_xml("<plist>" + repeated("<array>", 100'000)).error->message,
            "nested too deeply");

  EXPECT_EQ(plist::read_xml(document("<true/>"), 10).error->message, "larger than 10 bytes");
}

TEST(xml, every_truncation_is_an_error) {
  std::string const text =
      plist::write_xml(plist::dictionary{{"a", plist::array{1, 2.5, "é", true, plist::data{7}}},
                                         {"b", plist::date{0.5}}})
          .text;
  std::string const end = "</plist>\n";
  for (std::size_t length = 0; length < text.size() - 1; ++length)
    EXPECT_TRUE(plist::read_xml(text.substr(0, length)).error) << length;
  EXPECT_FALSE(plist::read_xml(text).error);
}

}  // namespace
