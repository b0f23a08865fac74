#include "plist/any.h"

#include <gtest/gtest.h>

#include <climits>

#include "data_rows.h"
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
  for (auto const& c : data_rows("property_lists.txt", "key paths")) {
    std::string text;
    int number = -1;
    EXPECT_EQ(plist::get_key_path(tree, c[0], text), !c[1].empty()) << c[0];
    EXPECT_EQ(text, c[1]) << c[0];
    EXPECT_EQ(plist::get_key_path(tree, c[0], number), c[2] != "-1") << c[0];
    EXPECT_EQ(number, std::stoi(c[2])) << c[0];
  }
  bool flag = false;
  EXPECT_TRUE(plist::get_key_path(tree, "on", flag) && flag);
  EXPECT_TRUE(plist::get_key_path(tree, "off", flag) && !flag);
  EXPECT_FALSE(plist::get_key_path(tree, "word", flag));
}

}  // namespace
