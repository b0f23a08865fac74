#include "plist/any.h"

#include <gtest/gtest.h>

#include <climits>

#include "plist/text_reader.h"
#include "random_values.h"

namespace {

using plist::value;

TEST(any, maps_kinds_one_to_one) {
  value const v = plist::dictionary{{"b", true},
                                    {"i", INT_MIN},
                                    {"r", 2.9},
                                    {"big", std::int64_t{INT_MAX} + 1},
                                    {"neg", -5'000'000'000},
                                    {"s", "x"},
                                    {"d", plist::data{1, 2}},
                                    {"t", plist::date{3.5}},
                                    {"a", plist::array{1, plist::dictionary{{"k", "v"}}}}};
  auto const tree = plist::convert(v);
  EXPECT_EQ(boost::get<bool>(tree.at("b")), true);
  EXPECT_EQ(boost::get<int>(tree.at("i")), INT_MIN);
  EXPECT_EQ(boost::get<int>(tree.at("r")), 2);
  EXPECT_EQ(boost::get<unsigned long long>(tree.at("big")), 2147483648u);
  EXPECT_EQ(boost::get<unsigned long long>(tree.at("neg")),
            static_cast<unsigned long long>(-5'000'000'000));
  EXPECT_EQ(boost::get<std::string>(tree.at("s")), "x");
  EXPECT_EQ(boost::get<std::vector<std::uint8_t>>(tree.at("d")), (plist::data{1, 2}));
  EXPECT_EQ(boost::get<wyn::date_t>(tree.at("t")), wyn::date_t{3.5});
  auto const& elements = boost::get<plist::array_t>(tree.at("a"));
  EXPECT_EQ(boost::get<plist::dictionary_t>(elements.at(1)).size(), 1u);

  EXPECT_TRUE(plist::convert(value("x")).empty());
  EXPECT_TRUE(plist::convert(value()).empty());
  EXPECT_FALSE(
      plist::convert(value(plist::dictionary{{"k", random_values::nested(100'000, 1)}})).empty());
}

TEST(any, key_paths) {
  auto const tree = plist::convert(plist::convert(
      "{ a = { b = 7; 'c.d' = hex; n = '0x1F'; }; 'a.b' = long; 'x.y' = { z = '010'; };"
      "  on = 1; off = 0; word = 'w1'; big = 5000000000; }"));
  struct {
    std::string path, text;  // an empty text is no conversion to a string
    int number;              // -1: none
  } const cases[] = {
      {"a.b", "7", 7},
      {"a.c.d", "hex", -1},
      {"a.n", "0x1F", 31},
      {"x.y.z", "010", 8},
      {"on", "1", 1},
      {"word", "w1", -1},
      {"big", "5000000000", -1},
      {"a", "", -1},
      {"x", "", -1},
      {"a.b.c", "", -1},
      {"", "", -1},
      {"on.x", "", -1},
      {"a.", "", -1},
      {".a", "", -1},
  };
  for (auto const& c : cases) {
    std::string text;
    int number = -1;
    EXPECT_EQ(plist::get_key_path(tree, c.path, text), !c.text.empty()) << c.path;
    EXPECT_EQ(text, c.text) << c.path;
    EXPECT_EQ(plist::get_key_path(tree, c.path, number), c.number != -1) << c.path;
    EXPECT_EQ(number, c.number) << c.path;
  }
  bool flag = false;
  EXPECT_TRUE(plist::get_key_path(tree, "on", flag) && flag);
  EXPECT_TRUE(plist::get_key_path(tree, "off", flag) && !flag);
  EXPECT_FALSE(plist::get_key_path(tree, "word", flag));
}

}  // namespace
