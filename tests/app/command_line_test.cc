#include "app/command_line.h"
#include "data_rows.h"

using namespace app;

namespace {

using words = strings;
using purpose = command_line::purpose;

std::optional<command_line> parsed(words const& arguments) {
  std::string error;
  auto const line = parse_command_line(arguments, error);
  EXPECT_EQ(line.has_value(), error.empty()) << error;
  return line;
}

std::string error_of(words const& arguments) {
  std::string error;
  return parse_command_line(arguments, error) ? "" : error;
}

/// The arguments, at blanks; "EMPTY" is an empty one.
words words_of(std::string const& text) {
  std::istringstream in(text);
  words result{std::istream_iterator<std::string>(in), {}};
  std::replace(result.begin(), result.end(), std::string("EMPTY"), std::string());
  return result;
}

plist::value setting(std::string const& text) {
  auto const line = parsed({"--batch", "--set", "KEY=" + text});
  return line ? line->batch.settings.at(0).second : plist::value("REFUSED");
}

TEST(command_line, keep_their_order) {
  auto const line =
      parsed({"--print", "text",     "a",        "--macro", "m",        "--print", "state",
              "--macro", "-",        "--repeat", "7",       "--answer", "T=x=y",   "--size=100x30",
              "-0",      "--strict", "--batch",  "b",       "--",       "--save",  "-x"});
  ASSERT_TRUE(line);
  EXPECT_EQ(line->what, purpose::batch);
  auto const* const o = &line->batch;
  EXPECT_EQ(o->prints, words({"text", "state"}));
  EXPECT_EQ(o->macros, (std::vector<batch_macro_option>{{"m", 1}, {"-", 7}}));
  EXPECT_EQ(o->files, words({"a", "b", "--save", "-x"}));
  EXPECT_EQ(o->answers.at(0), std::pair(std::string("T"), std::string("x=y")));
  EXPECT_EQ(o->columns, 100);
  EXPECT_EQ(o->rows, 30);
  EXPECT_TRUE(o->strict);
  EXPECT_TRUE(o->null_separated);
  EXPECT_FALSE(o->save);
}

TEST(command_line, settings_have_the_type_that_they_look_like) {
  EXPECT_EQ(setting("true"), plist::value(true));
  EXPECT_EQ(setting("false"), plist::value(false));
  EXPECT_EQ(setting("-12"), plist::value(-12));
  EXPECT_EQ(setting("1.5e3"), plist::value(1500.0));
  EXPECT_EQ(setting("plist:( 'a', 2 )"), plist::value(plist::array{"a", 2}));
  for (char const* text :
       {"", "inf", "nan", "-inf", "12x", "e", "-", "0x10", "a=b", "TRUE", "1.2.3"})
    EXPECT_EQ(setting(text), plist::value(text)) << text;
}

TEST(command_line, says_what_the_program_is_called_for) {
  constexpr char const* purposes[] = {"windows", "batch", "help", "version"};
  for (auto const& c : data_rows("command_lines.txt", "purposes")) {
    auto const line = parsed(words_of(c[0]));
    ASSERT_TRUE(line) << c[0];
    EXPECT_EQ(purposes[static_cast<int>(line->what)], c[1]) << c[0];
    EXPECT_EQ(line->batch.files, words_of(c[2])) << c[0];
    EXPECT_EQ(line->session, words_of(c[3])) << c[0];
  }
}

TEST(command_line, wrong_ones_are_refused_with_a_reason) {
  for (auto const& c : data_rows("command_lines.txt", "refused"))
    EXPECT_TRUE(error_of(words_of(c[0])).starts_with(c[1]))
        << c[0] << ": " << error_of(words_of(c[0]));
}

}  // namespace
