#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "headless/recording_graphics.h"
#include "platform/user_defaults.h"
#include "text/folding_filter.h"
#include "text/marked_text.h"
#include "textview/WynTextView.h"
#include "textview/view_will_change.h"

#include <gtest/gtest.h>

// Folding with the mouse: cells are 8 by 16 pixels, the gutter is the 13 pixels of the fold marks.
namespace {

using folding_filter = class text::view::folding_filter;

folding_filter::pattern pattern(std::u16string_view source) {
  return std::make_unique<oniguruma::ptrn_t>(source.data(), source.data() + source.size(), 0u);
}

class folding : public testing::Test {
 protected:
  folding()
      : former_(
            platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""))) {
    view_ = std::make_unique<WynTextView>();
    host_ = std::make_unique<headless::headless_view_host>(*view_);
    view_->setCurrentStyleSheet({});
    view_->setDocument(WynDocument::document());
    filter().set_patterns(pattern(u"\\(\\s*$"), pattern(u"^\\s*\\)"));
    marked_text::set(*view_->view(), "|0 (\n  1 (\n\t\t2\n  )\n  4 (\n  )\n)\n7\n  )");
    view_->performSelectorWithObject("makeTextLarger:", {});  // lays out the gutter anew
    view_->performSelectorWithObject("makeTextSmaller:", {});
  }
  ~folding() override {
    host_.reset();
    view_.reset();
    platform::user_defaults::set_standard(std::move(former_));
  }

  folding_filter& filter() { return *view_->view()->folding_filter; }
  static platform::point mark(double row) { return {6, 2 + row * 16 + 8}; }
  static platform::point text(double row, double column) {
    return {13 + 4 + column * 8, 2 + row * 16 + 8};
  }
  void click(platform::point at, std::uint32_t modifiers = 0) {
    view_->mouse_down({at, platform::mouse_button::left, 1, modifiers});
    view_->mouse_up({at, platform::mouse_button::left, 1, modifiers});
  }
  /// The images drawn, as "ROW NAME", in order.
  std::string images() {
    headless::recording_graphics g;
    view_->draw(g, host_->visible_rect());
    std::string result;
    for (std::string const& operation : g.operations()) {
      double x = 0, y = 0;
      int name = 0;
      if (std::sscanf(operation.c_str(), "image %lf,%lf %*s %n", &x, &y, &name) == 2)
        result += std::to_string(static_cast<int>((y - 2) / 16)) + operation.substr(name) + "|";
    }
    return result;
  }

  headless::headless_desktop desktop_;
  std::unique_ptr<platform::user_defaults> former_;
  std::unique_ptr<WynTextView> view_;
  std::unique_ptr<headless::headless_view_host> host_;
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
  EXPECT_EQ(view_->view()->selection.current_mark.base.pos(), text::pos(1, 5));
  click(mark(4));  // from the block's end
  EXPECT_EQ(images(), "0Folding Collapsed|0Folding Ellipsis|");
  click(mark(0));
  EXPECT_EQ(images(), folded);
  click(text(1, 5.6 + 1));  // on the ellipsis
  EXPECT_EQ(images(), open);

  click(mark(7));  // nothing there: a click like any other, which selects the line
  EXPECT_TRUE(view_->view()->has_selection());
  click(mark(0), platform::modifier::shift);
  EXPECT_EQ(filter().foldings.size(), 3u);
  click(mark(0), platform::modifier::shift);
  EXPECT_EQ(images(), open);
  click(mark(3), platform::modifier::option);
  EXPECT_EQ(view_->view()->lines(), 6u);
  click(mark(1), platform::modifier::option);
  EXPECT_EQ(images(), open);
}

TEST_F(folding, the_tool_tip_tells_what_is_folded) {
  click(mark(0));
  EXPECT_FALSE(view_->tool_tip_at(text(0, 2)));
  auto const tip = view_->tool_tip_at(text(0, 5));
  ASSERT_TRUE(tip);
  EXPECT_EQ(marked_text::utf8(tip->text), "  1 (\n        2\n  )\n  4 (\n  )\n)");
  EXPECT_TRUE(tip->area.contains(text(0, 5)));
  EXPECT_FALSE(view_->tool_tip_at(text(1, 5)));

  // Any key closes it; Escape does nothing else.
  auto const press = [&](char16_t key) {
    host_->shows_tool_tip = true;
    platform::key_event event;
    event.characters = event.characters_ignoring_modifiers = key;
    view_->key_down(event);
    EXPECT_FALSE(host_->shows_tool_tip);
  };
  view_->performSelectorWithObject("selectAll:", {});
  press(platform::function_key::escape);
  EXPECT_TRUE(view_->view()->has_selection());
  press(u'x');
  EXPECT_EQ(marked_text::text_of(*view_->view()->storage), "x");
}

TEST_F(folding, levels_toggle_and_queries_tell_what_is_possible) {
  auto const item = [&](char const* selector) {
    platform::menu_item result;
    result.selector = selector;
    view_->validateMenuItem(result);
    return result;
  };
  EXPECT_TRUE(item("toggleFolding:").enabled);
  EXPECT_EQ(item("toggleFolding:").title, "Fold Block");
  EXPECT_TRUE(item("foldAllAtLevel:").enabled);
  EXPECT_FALSE(item("unfoldAll:").enabled);
  EXPECT_FALSE(item("foldSelection:").enabled);
  view_->performSelectorWithObject("foldAllAtLevel:", 2);
  EXPECT_EQ(filter().foldings, (std::set<folding_filter::folding_t>{{1, 3}, {4, 5}}));
  EXPECT_TRUE(item("unfoldAll:").enabled);
  view_->performSelectorWithObject("foldAllAtLevel:", 2);
  EXPECT_TRUE(filter().foldings.empty());
  view_->performSelectorWithObject("foldAllAtLevel:", 0);
  EXPECT_EQ(view_->view()->lines(), 3u);
  EXPECT_EQ(item("toggleFolding:").title, "Unfold Block");
  view_->performSelectorWithObject("toggleFoldingsEnabled:", {});
  EXPECT_EQ(view_->view()->lines(), 9u);
  EXPECT_EQ(images(), "");
}

}  // namespace
