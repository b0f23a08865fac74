#include "plist/value.h"

#include "plist/description.h"
#include "random_values.h"
#include "test.h"

namespace {

using plist::value;

TEST(value, numbers_booleans_and_strings_convert) {
  constexpr int other = 77;  // the fallback
  struct {
    value v;
    bool boolean;
    std::int64_t integer;
    double real;
    std::string string;
  } const cases[] = {
      {true, true, 1, 1, "1"},
      {false, false, 0, 0, "0"},
      {12, true, 12, 12, "12"},
      {-3.75, true, -3, -3.75, "-3.75"},
      {0.1, true, 0, 0.1, "0.1"},
      {1e300, true, other, 1e300, "1e+300"},
      {9223372036854775808.0, true, other, 9223372036854775808.0, "9223372036854775808"},
      {-9223372036854775808.0, true, INT64_MIN, -9223372036854775808.0, "-9223372036854775808"},
      {"12", true, 12, 12, "12"},
      {" -7 ", true, -7, -7, " -7 "},
      {"+7", true, 7, 7, "+7"},
      {"+-7", true, other, other, "+-7"},
      {"1.5", true, 1, 1.5, "1.5"},
      {"0.0", false, 0, 0, "0.0"},
      {"9223372036854775807", true, INT64_MAX, 9223372036854775807.0, "9223372036854775807"},
      {"YES", true, other, other, "YES"},
      {"true", true, other, other, "true"},
      {"No", false, other, other, "No"},
      {"FALSE", false, other, other, "FALSE"},
      {"12 apples", true, other, other, "12 apples"},
      {"", true, other, other, ""},
      {value(), true, other, other, "fallback"},
      {plist::array{1}, true, other, other, "fallback"},
      {plist::date{1}, true, other, other, "fallback"},
  };
  for (auto const& c : cases) {
    EXPECT_EQ(c.v.boolean_or(true), c.boolean) << c.v;
    EXPECT_EQ(c.v.integer_or(other), c.integer) << c.v;
    EXPECT_EQ(c.v.real_or(other), c.real) << c.v;
    EXPECT_EQ(c.v.string_or("fallback"), c.string) << c.v;
  }
  EXPECT_EQ(value(std::nan("")).integer_or(other), other);
}

TEST(value, only_equal_kinds_are_equal) {
  value const one[] = {1,
                       1.0,
                       true,
                       "1",
                       plist::date{1},
                       plist::data{1},
                       plist::array{1},
                       plist::dictionary{{"1", 1}},
                       value()};
  for (auto const& a : one)
    for (auto const& b : one) EXPECT_EQ(a == b, &a == &b) << a << " and " << b;
  EXPECT_EQ(value("a"), value(std::string("a")));
  EXPECT_EQ(value(plist::array{1, "x"}), value(plist::array{1, "x"}));
  EXPECT_FALSE(value(plist::array{1, "x"}) == value(plist::array{1, "y"}));
}

TEST(value, missing_entries_are_nothing) {
  value const v = plist::dictionary{{"a", plist::dictionary{{"b", 1}}}};
  EXPECT_EQ(v["a"]["b"], value(1));
  EXPECT_FALSE(v["x"]["y"]["z"]);
  EXPECT_FALSE(value(3)["x"]);
  EXPECT_TRUE(value("x").elements().empty());
  EXPECT_TRUE(value("x").entries().empty());
}

TEST(value, freeing_a_deep_value_takes_no_deep_stack) {
  value array = 1, dictionary = 1;
  for (int i = 0; i < 200'000; ++i) {
    array = plist::array{std::move(array), i};
    dictionary = plist::dictionary{{"k", std::move(dictionary)}};
  }
  value const shared = array;
  array = {};
  EXPECT_EQ(shared.elements().size(), 2u);
}

TEST(value, descriptions) {
  struct {
    value v;
    std::string text;
  } const cases[] = {
      {true, "1"},
      {-5, "-5"},
      {1.0, "1"},
      {0.1 + 0.2, "0.30000000000000004"},
      {std::numeric_limits<double>::infinity(), "inf"},
      {-std::numeric_limits<double>::infinity(), "-inf"},
      {std::nan(""), "nan"},
      {plist::date{0}, "2001-01-01 00:00:00 +0000"},
      {plist::date{-0.5}, "2000-12-31 23:59:59 +0000"},
      {plist::date{1e300}, "1e+300"},
      {plist::data{}, "<>"},
      {plist::data{0x0f, 0xbd, 0x77, 0x1c, 0x2e}, "<0fbd771c 2e>"},
      {"text", "text"},
      {value(), ""},
      {plist::array{"a", true}, "(\n\t'a',\n\t1,\n)"},
  };
  for (auto const& c : cases) EXPECT_EQ(plist::description(c.v), c.text);
}

}  // namespace
