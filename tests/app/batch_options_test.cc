#include "app/batch_options.h"

#include <gtest/gtest.h>

namespace {

std::string error_of(std::vector<std::string> const& arguments) {
  std::string error;
  return parse_batch_options(arguments, error) ? "" : error;
}

plist::value setting(std::string const& text) {
  std::string error;
  auto const options = parse_batch_options({"--set", "KEY=" + text}, error);
  return options ? options->settings.at(0).second : plist::value("REFUSED");
}

TEST(batch_options, keep_their_order) {
  std::string error;
  auto const o = parse_batch_options(
      {"--print", "text",     "a",        "--macro", "m",        "--print", "state",
       "--macro", "-",        "--repeat", "7",       "--answer", "T=x=y",   "--size",
       "100x30",  "--strict", "b",        "--",      "--save",   "-"},
      error);
  ASSERT_TRUE(o) << error;
  using list = std::vector<std::string>;
  EXPECT_EQ(o->prints, list({"text", "state"}));
  EXPECT_EQ(o->macros, (std::vector<batch_macro_option>{{"m", 1}, {"-", 7}}));
  EXPECT_EQ(o->files, list({"a", "b", "--save", "-"}));
  EXPECT_EQ(o->answers.at(0), std::pair(std::string("T"), std::string("x=y")));
  EXPECT_EQ(o->columns, 100);
  EXPECT_EQ(o->rows, 30);
  EXPECT_TRUE(o->strict);
  EXPECT_FALSE(o->save);
}

TEST(batch_options, settings_have_the_type_that_they_look_like) {
  EXPECT_EQ(setting("true"), plist::value(true));
  EXPECT_EQ(setting("false"), plist::value(false));
  EXPECT_EQ(setting("-12"), plist::value(-12));
  EXPECT_EQ(setting("1.5e3"), plist::value(1500.0));
  EXPECT_EQ(setting("plist:( 'a', 2 )"), plist::value(plist::array{"a", 2}));
  for (char const* text :
       {"", "inf", "nan", "-inf", "12x", "e", "-", "0x10", "a=b", "TRUE", "1.2.3"})
    EXPECT_EQ(setting(text), plist::value(text)) << text;
}

TEST(batch_options, wrong_ones_are_refused_with_a_reason) {
  EXPECT_EQ(error_of({"--bogus"}), "unknown option --bogus");
  EXPECT_EQ(error_of({"-x"}), "unknown option -x");
  for (char const* option :
       {"--set", "--macro", "--answer", "--save-as", "--print", "--render", "--size"})
    EXPECT_EQ(error_of({option}), std::string(option) + " needs a value");
  using arguments = std::vector<std::string>;
  for (arguments const& wrong : {arguments{"--set", "KEY"},
                                 {"--set", "=1"},
                                 {"--set", "K=plist:{"},
                                 {"--answer", "x"},
                                 {"--macro", ""},
                                 {"--macro", "m", "--repeat", "-1"},
                                 {"--macro", "m", "--repeat", "2x"},
                                 {"--print", "all"},
                                 {"--size", "80"},
                                 {"--size", "0x10"},
                                 {"--size", "80x99999"},
                                 {"--size", "80x24x"}})
    EXPECT_EQ(error_of(wrong), "bad value for " + *(wrong.end() - 2) + ": " + wrong.back());
  EXPECT_EQ(error_of({"--repeat", "2"}), "--repeat needs a --macro before it");
  EXPECT_NE(error_of({"--save", "--save-as", "x", "f"}), "");
  EXPECT_NE(error_of({"--save-as", "x", "f", "g"}), "");
  EXPECT_NE(error_of({"--render", "x", "f", "g"}), "");
}

}  // namespace
