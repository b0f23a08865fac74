#include "app/command_line.h"
#include "test.h"
#include "test.h"

using namespace app;

namespace {

using words = std::vector<std::string>;
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

words batch(words arguments) {
  arguments.insert(arguments.begin(), "--batch");
  return arguments;
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
  struct {
    words arguments;
    purpose what;
    words files, session;
  } const cases[] = {
      {{}, purpose::windows, {}, {}},
      {{"a", "b:3"}, purpose::windows, {"a", "b:3"}, {}},
      {{"--", "-platform", "--batch"}, purpose::windows, {"-platform", "--batch"}, {}},
      {{"-session", "1f", "a"}, purpose::windows, {"a"}, {"-session", "1f"}},
      {{"--", "-session", "1f"}, purpose::windows, {"-session", "1f"}, {}},
      {{"a", "--batch", "-"}, purpose::batch, {"a", "-"}, {}},
      {{"a", "-h", "--bogus"}, purpose::help, {"a"}, {}},
      {{"--batch", "--print", "text", "--help"}, purpose::help, {}, {}},
      {{"--save", "--version"}, purpose::version, {}, {}},
  };
  for (auto const& c : cases) {
    auto const line = parsed(c.arguments);
    ASSERT_TRUE(line);
    EXPECT_EQ(line->what, c.what);
    EXPECT_EQ(line->batch.files, c.files);
    EXPECT_EQ(line->session, c.session);
  }
}

TEST(command_line, wrong_ones_are_refused_with_a_reason) {
  for (words const& mode : {words{}, {"--batch"}})
    for (char const* unknown : {"--bogus", "-x", "-platform", "--bogus=1"}) {
      words arguments = mode;
      arguments.push_back(unknown);
      std::string const named = unknown[1] == '-' ? unknown : std::string(unknown, 2);
      EXPECT_EQ(error_of(arguments), "unknown option " + named);
    }
  for (char const* option :
       {"--set", "--macro", "--answer", "--save-as", "--print", "--render", "--size"})
    EXPECT_EQ(error_of(batch({option})), std::string(option) + " needs a value");
  for (words const& wrong : {words{"--set", "KEY"},
                             {"--set", "=1"},
                             {"--set", "K=plist:{"},
                             {"--answer", "x"},
                             {"--macro", ""},
                             {"--macro", "m", "--repeat", "-1"},
                             {"--macro", "m", "--repeat", "2x"},
                             {"--print", "all"},
                             {"--explain", "3"},
                             {"--size", "80"},
                             {"--size", "0x10"},
                             {"--size", "500x501"},
                             {"--size", "2147483647x2147483647"},
                             {"--size", "80x24x"}})
    EXPECT_EQ(error_of(batch(wrong)), "bad value for " + *(wrong.end() - 2) + ": " + wrong.back());
  EXPECT_EQ(error_of(batch({"--repeat", "2"})), "--repeat needs a --macro or --item before it");
  EXPECT_EQ(error_of(batch({"--save=x"})), "--save takes no value");
  EXPECT_EQ(error_of({"--print", "text"}), "--print needs --batch");
  for (words const& wrong : {words{"--save", "--save-as", "x", "f"},
                             {"--save-as", "x", "f", "g"},
                             {"--render", "x", "f", "g"},
                             {"--save", "-"},
                             {"-", "-"},
                             {"--macro", "-", "-"},
                             {"--save-as", "-", "--print", "text", "f"}})
    EXPECT_NE(error_of(batch(wrong)), "");
  EXPECT_NE(error_of({"-"}), "");
}

}  // namespace
