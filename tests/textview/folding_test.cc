#include "headless/recording_graphics.h"
#include "text/views/folding_filter.h"
#include "textview/shown_view.h"

// Folding with the mouse: cells are 8 by 16 pixels, the gutter is the 13 pixels of the fold marks.
namespace {

using folding_filter = class text::view::folding_filter;

folding_filter::pattern pattern(std::u16string_view source) {
  return std::make_unique<oniguruma::ptrn_t>(source.data(), source.data() + source.size(), 0u);
}

class folding : public shown_view_test, public shown_view {
 protected:
  folding() {
    filter().set_patterns(pattern(u"\\(\\s*$"), pattern(u"^\\s*\\)"));
    set("|0 (\n  1 (\n\t\t2\n  )\n  4 (\n  )\n)\n7\n  )");
    perform("makeTextLarger:");  // lays out the gutter anew
    perform("makeTextSmaller:");
  }

  folding_filter& filter() { return *view.view()->folding_filter; }
  static platform::point mark(double row) { return {6, 2 + row * 16 + 8}; }
  static platform::point text_at(double row, double column) {
    return {13 + 4 + column * 8, 2 + row * 16 + 8};
  }
  /// The images drawn, as "ROW NAME", in order.
  std::string images() {
    headless::recording_graphics g;
    view.draw(g, host.visible_rect());
    std::string result;
    for (std::string const& operation : g.operations()) {
      double x = 0, y = 0;
      int name = 0;
      if (std::sscanf(operation.c_str(), "image %lf,%lf %*s %n", &x, &y, &name) == 2)
        result += std::to_string(static_cast<int>((y - 2) / 16)) + operation.substr(name) + "|";
    }
    return result;
  }
};

TEST_F(folding, marks_in_the_gutter_fold_and_unfold) {
  std::string const top = "Folding Top Cap|", bottom = "Folding Bottom Cap|";
  std::string const open =
      "0" + top + "1" + top + "3" + bottom + "4" + top + "5" + bottom + "6" + bottom;
  EXPECT_EQ(images(), open);
  click(mark(1));
  std::string const folded =
      "0" + top + "1Folding Collapsed|2" + top + "3" + bottom + "4" + bottom + "1Folding Ellipsis|";
  EXPECT_EQ(images(), folded);
  EXPECT_EQ(view.view()->selection.current_mark.base.pos(), text::pos(1, 5));
  click(mark(4));  // from the block's end
  EXPECT_EQ(images(), "0Folding Collapsed|0Folding Ellipsis|");
  click(mark(0));
  EXPECT_EQ(images(), folded);
  click(text_at(1, 5.6 + 1));  // on the ellipsis
  EXPECT_EQ(images(), open);

  click(mark(7));  // nothing there: a click like any other, which selects the line
  EXPECT_TRUE(view.view()->has_selection());
  click(mark(0), 1, platform::modifier::shift);
  EXPECT_EQ(filter().foldings.size(), 3u);
  click(mark(0), 1, platform::modifier::shift);
  EXPECT_EQ(images(), open);
  click(mark(3), 1, platform::modifier::option);
  EXPECT_EQ(view.view()->lines(), 6u);
  click(mark(1), 1, platform::modifier::option);
  EXPECT_EQ(images(), open);
}

// What opens a fold on the way to where a selection ends doesn't move where it begins.
TEST_F(folding, a_selection_into_a_fold_begins_where_it_should) {
  std::string const text = "0 (\n  1 (\n\t\t2\n  )\n  4 (\n  )\n)\n7\n  )";
  auto const selected = [&](std::string const& caret, auto action) {
    set(caret);
    EXPECT_TRUE(filter().fold_lines(0, 6));
    view.goToLineAndColumn({1, 4});
    action();
    std::u16string const units = marked_text::units_of(*view.view()->storage);
    EXPECT_EQ(marked_text::utf8(units), text);
    return get();
  };
  EXPECT_EQ(selected("|" + text, [&] { perform("selectBlock:"); }),
            "0 [(\n  1 (\n\t\t2\n  )\n  4 (\n  )\n)]\n7\n  )");
  EXPECT_EQ(selected("|" + text,
                     [&] {
                       view.selectToLineAndColumn({3, 1}, false);
                     }),
            "0 ([\n  1 (\n]\t\t2\n  )\n  4 (\n  )\n)\n7\n  )");
}

TEST_F(folding, a_block_without_an_end_has_no_mark) {
  auto const shown = [&](std::string const& text) {
    set(text);
    return images();
  };
  EXPECT_EQ(shown("|(\n  (\n  )\n  ("), "1Folding Top Cap|2Folding Bottom Cap|");
  EXPECT_EQ(shown("|(\n(\n)"), "1Folding Top Cap|2Folding Bottom Cap|");
  click(mark(0));  // a click like any other
  EXPECT_TRUE(filter().foldings.empty());
  EXPECT_TRUE(view.view()->has_selection());
  // What is far away isn't looked for.
  EXPECT_EQ(shown("|(" + std::string(20000, '\n') + ")"), "0Folding Top Cap|");
}

TEST_F(folding, the_tool_tip_tells_what_is_folded) {
  click(mark(0));
  EXPECT_FALSE(view.tool_tip_at(text_at(0, 2)));
  auto const tip = view.tool_tip_at(text_at(0, 5));
  ASSERT_TRUE(tip);
  EXPECT_EQ(marked_text::utf8(tip->text), "  1 (\n        2\n  )\n  4 (\n  )\n)");
  EXPECT_TRUE(tip->area.contains(text_at(0, 5)));
  EXPECT_FALSE(view.tool_tip_at(text_at(1, 5)));

  // Any key closes it; Escape does nothing else.
  auto const press_over_tip = [&](char16_t key) {
    host.shows_tool_tip = true;
    press({&key, 1});
    EXPECT_FALSE(host.shows_tool_tip);
  };
  perform("selectAll:");
  press_over_tip(platform::function_key::escape);
  EXPECT_TRUE(view.view()->has_selection());
  press_over_tip(u'x');
  EXPECT_EQ(text(), "x");
}

TEST_F(folding, levels_toggle_and_queries_tell_what_is_possible) {
  EXPECT_TRUE(validated("toggleFolding:").enabled);
  EXPECT_EQ(validated("toggleFolding:").title, "Fold Block");
  EXPECT_TRUE(validated("foldAllAtLevel:").enabled);
  EXPECT_FALSE(validated("unfoldAll:").enabled);
  EXPECT_FALSE(validated("foldSelection:").enabled);
  perform("foldAllAtLevel:", 2);
  EXPECT_EQ(filter().foldings, (folding_filter::folding_set{{1, 3}, {4, 5}}));
  EXPECT_TRUE(validated("unfoldAll:").enabled);
  perform("foldAllAtLevel:", 2);
  EXPECT_TRUE(filter().foldings.empty());
  perform("foldAllAtLevel:", 0);
  EXPECT_EQ(view.view()->lines(), 3u);
  EXPECT_EQ(validated("toggleFolding:").title, "Unfold Block");
  perform("toggleFoldingsEnabled:");
  EXPECT_EQ(view.view()->lines(), 9u);
  EXPECT_EQ(images(), "");
}

}  // namespace
