#include "actions/comments.h"
#include "test.h"
#include "text/marked_text.h"
#include "text/random_text.h"

using namespace actions;

// Each drawing with its markers, what toggling makes of it, and that toggling again takes it back.

namespace {

struct shown_text {
  text::storage storage;
  text::view view{storage};
};

using markers = std::vector<comment_marker>;

markers const c = {{u"/* ", u" */"}, {u"// ", u""}}, css = {{u"/* ", u" */"}},
              html = {{u"<!-- ", u" -->"}}, shell = {{u"# ", u""}};

struct toggle_case {
  markers const& with;
  char const *before, *after;
};

toggle_case const cases[] = {
    {c, "a|b", "// a|b"},
    {c, "  |a\n  b", "  // |a\n  b"},
    {c, "[  a\n\n    b\n]c", "[  // a\n\n  //   b\n]c"},
    {c, "\t[a\n  b]", "// \t[a\n//   b]"},
    {shell, "[# a\nb]", "# [# a\n# b]"},
    {shell, "a\n|\nb", "a\n# |\nb"},
    {css, "  a|b: c;  ", "  /* a|b: c; */  "},
    {css, "[a\n  b\n]c", "/* [a\n  b */\n]c"},
    {css, "a [b] c", "a [/* b */] c"},
    {css, "a /* b */ |c", "/* a /* b * / |c */"},
    {html, "<p>|</p>", "<!-- <p>|</p> -->"},
    {html, "[x <!-- y -->\nz]", "<!-- [x <!-- y - ->\nz -->]"},
};

TEST(comments, are_toggled_and_taken_back) {
  for (auto const& [with, before, after] : cases) {
    shown_text shown;
    marked_text::set(shown.view, before);
    std::string const text = marked_text::text_of(shown.storage);
    toggle_comments(shown.view, with);
    EXPECT_EQ(marked_text::get(shown.view), after) << before;
    toggle_comments(shown.view, with);
    EXPECT_EQ(marked_text::text_of(shown.storage), text) << before;
  }
}

TEST(comments, need_a_marker) {
  shown_text shown;
  text::view& view = shown.view;
  marked_text::set(view, "a|b");
  EXPECT_FALSE(toggle_comments(view, {}));
  EXPECT_FALSE(toggle_comments(view, {{u" ", u""}}));
  EXPECT_EQ(marked_text::get(view), "a|b");
}

// Of random lines made of blanks, letters and markers.
TEST(comments, toggled_twice_leave_any_text_as_it_was) {
  constexpr std::u16string_view parts[] = {u"a",   u" ",    u"\t",  u"\n",   u"/*", u"*/", u"//",
                                           u"* /", u"<!--", u"-->", u"- ->", u"#",  u"é"};
  for (unsigned seed = 1; seed <= 2000; ++seed) {
    std::mt19937 random(seed);
    std::u16string text;
    for (unsigned n = random() % 30; n > 0; --n) text += parts[random() % std::size(parts)];
    for (markers const& with : {c, css, html, shell}) {
      shown_text shown;
      text::view& view = shown.view;
      view.insert(text.begin(), text.end());
      view.selection.select({&view, shown.storage.begin_of_line(0)}, view.end(), false);
      if (!toggle_comments(view, with)) continue;
      bool const became_comment = marked_text::units_of(shown.storage).size() > text.size();
      toggle_comments(view, with);
      if (became_comment) EXPECT_EQ(marked_text::units_of(shown.storage), text) << "seed " << seed;
    }
  }
}

}  // namespace
