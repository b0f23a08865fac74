#include "styles/scope_style.h"

#include "data_rows.h"
#include "plist/text_reader.h"
#include "regex/transformation_program.h"
#include "styles/color_strings.h"

using namespace styles;

namespace {

plist::value dialect(std::string const& text) {
  plist::value value = plist::convert(text, nullptr);
  EXPECT_TRUE(value) << text;
  return value;
}

// Rules of a theme, whose selectors score against the scopes source.x and string.y.
plist::value style(std::string const& rules) {
  style_candidates candidates;
  add_theme_rules(dialect(rules), {"source.x", "string.y"}, candidates);
  return merged_style(candidates);
}

TEST(scope_style, merges_by_score_and_later_of_equals) {
  plist::value const merged = style(
      "( { scope = 'string'; settings = { a = 'string'; b = 'string'; }; },"
      "  { settings = { a = 'all'; c = 'first'; }; },"
      "  { settings = { c = 'second'; }; },"
      "  { scope = 'comment'; settings = { a = 'none'; }; } )");
  EXPECT_EQ(merged, dialect("{ a = 'string'; b = 'string'; c = 'second'; }"));
}

TEST(scope_style, blends_translucent_colours_with_those_below) {
  struct {
    char const *below, *above, *result;
  } const cases[] = {
      {"#FF0000", "#0000FF80", "#7e0080ff"},    // opaque below
      {"#FF000040", "#0000FF80", "#7e008040"},  // the lowest one's alpha stays
      {"", "#0000FF80", "#0000FF80"},           // nothing below
      {"#FF0000", "#0000FF", "#0000FF"},        // nothing to blend
      {"#FF0000", "no colour", "no colour"},
  };
  for (auto const& c : cases) {
    std::string const below = *c.below ? std::string("background = '") + c.below + "';" : "";
    EXPECT_EQ(style("( { settings = { " + below +
                    " }; }, { scope = 'string'; settings = { "
                    "background = '" +
                    c.above + "'; }; } )")["background"]
                  .string_or(""),
              c.result)
        << c.below << " " << c.above;
  }
}

TEST(scope_style, takes_lists_of_variables_whole_or_not_at_all) {
  plist::value const merged = style(
      "( { settings = { shellVariables = ( { name = 'A'; value = '1'; },"
      "                                    { name = 'B'; value = '1'; } ); }; },"
      "  { settings = { shellVariables = ( { name = 'C'; value = '2'; } ); }; },"
      "  { scope = 'string'; settings = { shellVariables = ( { name = 'B'; value = '3'; } ); }; } "
      ")");
  EXPECT_EQ(merged["shellVariables"],
            dialect("( { name = 'B'; value = '3'; }, { name = 'C'; value = '2'; } )"));
}

TEST(scope_style, reads_colours_and_font_styles) {
  EXPECT_EQ(NSColorFromString("#12345678"), (platform::color{0x12, 0x34, 0x56, 0x78}));
  EXPECT_EQ(NSColorFromString("#12345"), (platform::color{0x12, 0x34, 0x5, 255}));
  for (char const* none : {"", "red", "#1234", "#"}) EXPECT_FALSE(NSColorFromString(none)) << none;
  EXPECT_EQ(RGBAForString("red"), (std::array<float, 4>{0, 0, 0, 1}));

  auto const words = style_from_dictionary(dialect("{ fontStyle = 'bolditalic'; underline = 1; }"),
                                           platform::color{1, 2, 3});
  EXPECT_EQ(words, (platform::text_style{{1, 2, 3}, true, true, false}));
  auto const numbers =
      style_from_dictionary(dialect("{ bold = 1; italic = 0; foreground = '#FFFFFF'; }"), {});
  EXPECT_EQ(numbers, (platform::text_style{{255, 255, 255}, true, false, false}));
}

TEST(transformation_program, substitutes_one_after_the_other) {
  for (auto const& c : data_rows("transformations.txt", "programs"))
    EXPECT_EQ(regex::transformation_program(c[0]).apply(c[1]), c[2]) << c[0];
}

}  // namespace
