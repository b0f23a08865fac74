#include "snippets/format_string.h"

#include "snippets/diacritics.h"
#include "snippets/expand_visitor.h"
#include "source_tree.h"
#include "test.h"

namespace {

using format_string::format_string_t;

TEST(format_string, expands_as_the_file_says) {
  format_string::variables_t const variables = {
      {"NAME", "hello World"}, {"EMPTY", ""}, {"1", "one"}, {"2", ""}};
  std::ifstream file(test_data("format_strings.txt"));
  int count = 0;
  testing::internal::CaptureStderr();
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with('"')) continue;
    std::istringstream row(line);
    std::string format, expected;
    row >> std::quoted(format, '"', '\0') >> std::quoted(expected, '"', '\0');
    for (std::size_t at; (at = expected.find("\\n")) != expected.npos;)
      expected.replace(at, 2, "\n");
    EXPECT_EQ(format_string_t(format).expand(variables), expected) << line;
    ++count;
  }
  EXPECT_NE(testing::internal::GetCapturedStderr().find("ERROR"), std::string::npos);
  EXPECT_GT(count, 30);
}

TEST(format_string, traps_end) {
  std::string const pieces[] = {"(?1:",       "${a:",     "${a/b/",     "${a:?",       "${",
                                "$(?1:${b:-", "${a:/up/", "(?1:x)(?2:", "(?1:${a:+$1}"};
  for (auto const& piece : pieces) {
    for (char const* end : {"", ")", "}", "/}"}) {
      std::string text;
      while (text.size() < 60'000) text += piece;
      text += end;
      format_string_t const format(text);
      EXPECT_FALSE(format.nodes().empty());
    }
  }
  // Substitutions in substitutions: 100 to the fifth matches.
  std::string bomb = "$a";
  for (int i = 0; i < 5; ++i) bomb = "${a/./" + bomb + "/g}";
  format_string_t(bomb).expand({{"a", std::string(100, 'x')}});
}

TEST(format_string, capitalize_and_asciify) {
  using snippet::expand_visitor;
  EXPECT_EQ(expand_visitor::capitalize("the war of the worlds"), "The war of the Worlds");
  EXPECT_EQ(expand_visitor::capitalize("  THE\u00c9TAT of it "), "  The\u00e9tat of It ");
  EXPECT_EQ(expand_visitor::asciify("na\u00efve \u201cq\u201d \u00c9"), "naive \"q\" E");
  EXPECT_EQ(expand_visitor::asciify("a\xff"), "a\xff");
  EXPECT_EQ(expand_visitor::asciify(std::string(1000, 'a') + "\u00e9"),
            std::string(1000, 'a') + "e");
}

TEST(format_string, case_of_characters_with_marks_and_code) {
  EXPECT_EQ(format_string_t("\\ue\u0301a").expand({}), "E\u0301a");
  snippet::run_command_callback_t const run = [](std::string const& code, auto const& variables) {
    return code + variables.at("x") + "\n\n";
  };
  snippet::expand_visitor visitor({{"x", "1"}}, &run);
  visitor.traverse({parser::code_t{"c"}});
  EXPECT_EQ(visitor.result, "c1\n");
}

TEST(format_string, diacritics_forward_and_back) {
  std::string const text = "a\u0300\u0301b\xff\u0301\u00e9x\u0300";
  std::vector<std::string> forward, back;
  auto const range = diacritics::make_range(text.data(), text.data() + text.size());
  for (auto unit : range) forward.emplace_back(unit);
  EXPECT_EQ(forward,
            (std::vector<std::string>{"a\u0300\u0301", "b", "\xff\u0301", "\u00e9", "x\u0300"}));
  for (auto it = range.end(); !(it == range.begin());) back.emplace_back(*--it);
  EXPECT_EQ(back, std::vector<std::string>(forward.rbegin(), forward.rend()));
  EXPECT_EQ((range.begin() + 3).length(), 2u);
}

}  // namespace
