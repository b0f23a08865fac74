#include "documents/WynDocument.h"
#include "headless/headless_desktop.h"
#include "headless/recording_graphics.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/marked_text.h"
#include "text/view_filter.h"
#include "textview/WynTextView.h"
#include "textview/geometry.h"
#include "textview/view_will_change.h"

#include <gtest/gtest.h>

#include <algorithm>

// The text view on the desktop without windows: cells are 8 pixels wide and rows 16 high, the text
// begins at x = 4 and y = 2.
namespace {

constexpr double cell = 8, row = 16, left = 4, top = 2;

class text_view : public testing::Test {
 protected:
  text_view()
      : former_(
            platform::user_defaults::set_standard(std::make_unique<platform::user_defaults>(""))) {
    view_ = std::make_unique<WynTextView>();
    host_ = std::make_unique<headless::headless_view_host>(*view_);
    view_->setCurrentStyleSheet({});
    view_->setDocument(WynDocument::document());
  }
  ~text_view() override {
    host_.reset();
    view_.reset();
    platform::user_defaults::set_standard(std::move(former_));
  }

  void set(std::string_view drawing) {
    view_will_change const scope(*view_);
    marked_text::set(*view_->view(), drawing);
  }
  std::string get() const { return marked_text::get(*view_->view()); }

  static platform::point at(double line, double column) {
    return {left + column * cell + 1, top + line * row + 5};
  }
  platform::mouse_event event(double line, double column, int clicks = 1,
                              std::uint32_t modifiers = 0) const {
    return {at(line, column), platform::mouse_button::left, clicks, modifiers};
  }
  void click(double line, double column, int clicks = 1, std::uint32_t modifiers = 0) {
    view_->mouse_down(event(line, column, clicks, modifiers));
    view_->mouse_up(event(line, column, clicks, modifiers));
  }
  void drag(double from_line, double from_column, double to_line, double to_column, int clicks = 1,
            std::uint32_t modifiers = 0) {
    view_->mouse_down(event(from_line, from_column, clicks, modifiers));
    view_->mouse_dragged(event(to_line, to_column, clicks, modifiers));
    view_->mouse_up(event(to_line, to_column, clicks, modifiers));
  }
  std::vector<std::string> drawn() const {
    headless::recording_graphics g;
    view_->draw(g, host_->visible_rect());
    return g.operations();
  }
  bool has_drawn(std::string const& operation) const {
    auto const all = drawn();
    return std::find(all.begin(), all.end(), operation) != all.end();
  }

  headless::headless_desktop desktop_;
  std::unique_ptr<platform::user_defaults> former_;
  std::unique_ptr<WynTextView> view_;
  std::unique_ptr<headless::headless_view_host> host_;
};

TEST_F(text_view, clicks_set_the_caret_and_select_words_and_lines) {
  set("|one two\nthree");
  click(0, 5);
  EXPECT_EQ(get(), "one t|wo\nthree");
  click(0, 5, 2);
  EXPECT_EQ(get(), "one [t|wo]\nthree");
  click(0, 5, 3);
  EXPECT_EQ(get(), "[one t|wo\n]three");
  click(9, 0);
  EXPECT_EQ(get(), "one two\nthree|");
  click(0, 30);
  EXPECT_EQ(get(), "one two|\nthree");
}

TEST_F(text_view, dragging_selects_by_units_words_and_lines) {
  set("|one two\nthree four");
  drag(0, 1, 1, 2);
  EXPECT_EQ(get(), "o[ne two\nth]ree four");
  drag(1, 2, 0, 5, 2);
  EXPECT_EQ(get(), "one ]two\nthree[ four");
  drag(0, 1, 1, 2, 3);
  EXPECT_EQ(get(), "[one two\nthree four]");
}

TEST_F(text_view, alt_drag_selects_columns_beyond_line_ends) {
  set("|abcd\nx\nefgh");
  drag(0, 1, 2, 3, 1, platform::modifier::option);
  EXPECT_EQ(get(), "a{bcd\nx\nefg}h");
  view_->performSelectorWithObject("delete:", {});
  EXPECT_EQ(marked_text::text_of(*view_->view()->storage), "ad\nx\neh");
}

TEST_F(text_view, shift_click_moves_the_nearer_end) {
  set("0123[456]789");
  click(0, 9, 1, platform::modifier::shift);
  EXPECT_EQ(get(), "0123[45678]9");
  click(0, 2, 1, platform::modifier::shift);
  EXPECT_EQ(get(), "01]2345678[9");
  set("012|3456789");
  click(0, 6, 1, platform::modifier::shift);
  EXPECT_EQ(get(), "012[345]6789");
}

TEST_F(text_view, a_drag_held_below_the_window_scrolls_and_selects) {
  std::string text = "|";
  for (int n = 0; n < 100; ++n) text += "line\n";
  set(text);
  view_->mouse_down(event(0, 2));
  view_->mouse_dragged(event(30, 2));
  desktop_.loop().run_for(2);
  EXPECT_GT(host_->visible_rect().y, 20 * row);
  view_->mouse_up(event(30, 2));
  double const y = host_->visible_rect().y;
  desktop_.loop().run_for(2);
  EXPECT_EQ(host_->visible_rect().y, y);
  EXPECT_TRUE(view_->view()->has_selection());
}

TEST_F(text_view, a_quick_tap_of_alt_turns_the_selection_into_columns) {
  set("a[bc\nd]ef");
  view_->modifiers_changed(platform::modifier::option);
  desktop_.loop().run_for(0.1);
  view_->modifiers_changed(0);
  EXPECT_EQ(get(), "a{bc\nd}ef");
  view_->modifiers_changed(platform::modifier::option);
  desktop_.loop().run_for(0.5);
  view_->modifiers_changed(0);
  EXPECT_EQ(get(), "a{bc\nd}ef");
}

TEST_F(text_view, the_middle_button_pastes_what_was_selected_last) {
  set("one [two] three");
  drag(0, 4, 0, 7);
  desktop_.loop().run_for(1);
  view_->mouse_down({at(0, 13), platform::mouse_button::middle, 1, 0});
  EXPECT_EQ(get(), "one two threetwo|");
}

TEST_F(text_view, keeps_no_copy_of_what_was_selected_for_undo) {
  set("[abc]def");
  view_->performSelectorWithObject("copy:", {});
  ASSERT_FALSE(view_->view()->selection.data.empty());
  view_->performSelectorWithObject("delete:", {});
  EXPECT_TRUE(view_->view()->saved_selection.data.empty());
  for (auto const& [key, selection] : view_->view()->view_filter->undo_map)
    EXPECT_TRUE(selection.data.empty());
  view_->performSelectorWithObject("undo:", {});
  EXPECT_EQ(get(), "[abc]def");
}

TEST_F(text_view, copying_columns_keeps_them_columns) {
  set("{abc\nab}c\nxy");
  view_->performSelectorWithObject("copy:", {});
  set("abc\nabc\n|xy");
  view_->performSelectorWithObject("paste:", {});
  EXPECT_EQ(marked_text::text_of(*view_->view()->storage), "abc\nabc\nabxy\nab");
  EXPECT_EQ(desktop_.general_pasteboard().get("text").string_or(""), "ab\nab\n");
}

TEST_F(text_view, draws_in_order_background_selection_text_caret) {
  set("one\ttwo|");
  auto const all = drawn();
  ASSERT_GE(all.size(), 5u);
  EXPECT_EQ(all.front(), "fill 0,0 640x384 #ffffff");
  EXPECT_TRUE(has_drawn("text 4,14 \"one\" #000000"));
  EXPECT_TRUE(has_drawn("text 36,14 \"two\" #000000"));
  EXPECT_EQ(*(all.end() - 2), "fill 60,2 1x16 #000000");
}

TEST_F(text_view, draws_only_what_the_dirty_rectangle_meets) {
  std::string text = "|";
  for (int n = 0; n < 1000; ++n) text += "line " + std::to_string(n) + "\n";
  set(text);
  headless::recording_graphics g;
  view_->draw(g, {0, top + 10 * row, 640, row});
  std::size_t rows = 0;
  for (auto const& operation : g.operations())
    rows += operation.find("\"line") != std::string::npos;
  EXPECT_LE(rows, 2u);
}

TEST_F(text_view, shows_invisibles_in_place_of_the_characters) {
  view_->setShowInvisibles(true);
  set("a\tb\u00a0c\x01\n|");
  auto const all = drawn();
  for (char const* mark : {"\u2023", "\u2022", "\u25c6", "\u00b7"})
    EXPECT_TRUE(std::any_of(all.begin(), all.end(), [&](auto const& o) {
      return o.find(mark) != std::string::npos;
    })) << mark;
}

TEST_F(text_view, numbers_lines_in_a_gutter_that_stays_when_scrolled_sideways) {
  view_->setLineNumbers(true);
  set("|one\ntwo\n" + std::string(500, 'x'));
  EXPECT_TRUE(has_drawn("text 38,14 \"1\" #000000"));
  EXPECT_TRUE(has_drawn("text 38,30 \"2\" #888888"));
  view_->performSelectorWithObject("moveToEndOfDocument:", {});
  double const x = host_->visible_rect().x;
  EXPECT_GT(x, 0);
  EXPECT_TRUE(has_drawn("text " + std::to_string(static_cast<int>(x) + 38) + ",14 \"1\" #888888"));
}

TEST_F(text_view, wraps_lines_to_what_is_visible) {
  set("|aaaa bbbb cccc dddd\nxx\n" + std::string(40, 'y'));
  view_->setSoftWrap(true);
  EXPECT_EQ(host_->frame_size.width, 640);
  host_->resize({4 + 12 + 11 * cell + 4, 384});
  EXPECT_EQ(view_->view()->screen_width, 10u);
  // The gutter marks the rows that go on; a long word is cut and yet all of it shows.
  EXPECT_EQ(host_->frame_size.width, host_->visible_rect().width);
  EXPECT_EQ(view_->view()->lines(), 7u);
  EXPECT_TRUE(has_drawn("text 16,14 \"aaaa bbbb \" #000000"));
  EXPECT_TRUE(has_drawn("text 16,30 \"cccc dddd\" #000000"));
  EXPECT_TRUE(has_drawn("text 16,62 \"yyyyyyyyyy\" #000000"));
  EXPECT_TRUE(has_drawn("text 16,78 \"yyyyyyyyyyy\" #000000"));
  view_->setShowSoftWrapInGutter(false);
  EXPECT_EQ(view_->layout().gutterWidth(), 0);
  EXPECT_EQ(view_->view()->screen_width, 11u);
  view_->setSoftWrap(false);
  EXPECT_EQ(view_->view()->lines(), 3u);
  EXPECT_GT(host_->frame_size.width, host_->visible_rect().width);

  WynTextView other;
  EXPECT_FALSE(other.softWrap());
  other.setSoftWrap(true);
  EXPECT_FALSE(view_->softWrap());
}

TEST_F(text_view, keeps_the_top_line_when_lines_are_wrapped_anew) {
  std::string text;
  for (int i = 0; i < 200; ++i) text += "some words that fill a line and more\n";
  set("|" + text);
  view_->setSoftWrap(true);
  host_->scroll_to({0, top + 100 * row});
  host_->resize({200, 384});
  EXPECT_GT(view_->view()->lines(), 300u);
  std::size_t const first = view_->layout().row_at(host_->visible_rect().y);
  EXPECT_EQ(view_->view()->begin(first).base.pos(), text::pos(100, 0));
}

TEST_F(text_view, shows_bookmarks_that_a_click_in_the_gutter_sets) {
  set("one\ntwo\nth|ree");
  platform::menu_item item;
  item.selector = "toggleCurrentBookmark:";
  view_->validateMenuItem(item);
  EXPECT_EQ(item.title, "Add Bookmark");
  EXPECT_EQ(view_->layout().gutterWidth(), 0);
  view_->performSelectorWithObject("toggleCurrentBookmark:", {});
  view_->validateMenuItem(item);
  EXPECT_EQ(item.title, "Remove Bookmark");
  EXPECT_TRUE(has_drawn("image 1,36 12x12 BookmarkFlag"));

  platform::mouse_event const in_flags{{5, top + 5}, platform::mouse_button::left, 1, 0};
  view_->mouse_down(in_flags);
  view_->mouse_up(in_flags);
  EXPECT_TRUE(view_->view()->has_bookmark(0));
  EXPECT_EQ(get(), "one\ntwo\nth|ree");
  view_->performSelectorWithObject("goToNextBookmark:", {});
  EXPECT_EQ(get(), "|one\ntwo\nthree");
  view_->mouse_down(in_flags);
  view_->mouse_up(in_flags);
  EXPECT_FALSE(view_->view()->has_bookmark(0));
  view_->setShowBookmarksInGutter(false);
  EXPECT_EQ(view_->layout().gutterWidth(), 0);
}

TEST_F(text_view, keeps_the_caret_in_sight) {
  set("|" + std::string(300, 'x'));
  view_->performSelectorWithObject("moveToEndOfLine:", {});
  EXPECT_TRUE(view_->visibleTextRect().contains(caret_rectangle(*view_)));
  view_->performSelectorWithObject("moveToBeginningOfLine:", {});
  EXPECT_EQ(host_->visible_rect().x, 0);
}

TEST_F(text_view, shows_marked_text_before_it_is_part_of_the_text) {
  set("ab|cd");
  view_->set_marked_text(u"\u306b", 1, 0);
  EXPECT_EQ(get(), "ab|cd");
  auto const all = drawn();
  EXPECT_TRUE(std::any_of(all.begin(), all.end(), [](auto const& o) {
    return o.find("\u306b\" #000000 underline") != std::string::npos;
  }));
  EXPECT_TRUE(has_drawn("text 28,14 \"cd\" #000000"));
  view_->insert_text(u"\u4e8c");
  EXPECT_EQ(get(), "ab\u4e8c|cd");
}

TEST_F(text_view, a_click_abandons_marked_text) {
  set("ab|cd");
  view_->set_marked_text(u"x", 1, 0);
  click(0, 0);
  EXPECT_EQ(get(), "|abcd");
  EXPECT_EQ(host_->compositions_abandoned, 1);
}

TEST_F(text_view, an_action_that_fails_beeps_and_leaves_no_step) {
  view_->performSelectorWithObject("undo:", {});
  EXPECT_EQ(desktop_.beeps, 1);
  view_->performSelectorWithObject("moveLeft:", {});
  EXPECT_FALSE(view_->view()->can_undo());
}

TEST_F(text_view, answers_for_selectors_as_menus_and_keys_need) {
  for (char const* name : {"moveLeft:", "moveRight:", "moveUp:", "moveDown:"})
    EXPECT_FALSE(view_->respondsToSelector(name)) << name;
  EXPECT_TRUE(view_->respondsToSelector("moveWordLeft:"));
  EXPECT_TRUE(view_->respondsToSelector("deleteBackward:"));
  EXPECT_TRUE(view_->respondsToSelector("undo:"));
  EXPECT_FALSE(view_->respondsToSelector("noSuchThing:"));
  set("ab|");
  view_->performSelectorWithObject("moveLeft:", {});
  EXPECT_EQ(get(), "a|b");

  platform::menu_item item;
  item.selector = "cut:";
  view_->validateMenuItem(item);
  EXPECT_FALSE(item.enabled);
  set("[ab]");
  view_->validateMenuItem(item);
  EXPECT_TRUE(item.enabled);
  item.selector = "toggleLineNumbers:";
  view_->setLineNumbers(true);
  view_->validateMenuItem(item);
  EXPECT_TRUE(item.checked);
}

TEST_F(text_view, publishes_what_the_status_bar_shows) {
  std::map<std::string, plist::value, std::less<>> values;
  view_->bind([&](std::string_view key, plist::value const& v) {
    values.insert_or_assign(std::string(key), v);
  });
  set("one\n\ttwo|");
  view_->performSelectorWithObject("moveToBeginningOfLine:", {});
  view_->performSelectorWithObject("moveForward:", {});
  EXPECT_EQ(values["lineNumber"].integer_or(-1), 1);
  EXPECT_EQ(values["columnNumber"].integer_or(-1), 4);
  view_->setTabSize(8);
  EXPECT_EQ(values["tabSize"].integer_or(-1), 8);
}

TEST_F(text_view, comes_back_to_where_it_was) {
  std::string text;
  for (int n = 0; n < 300; ++n) text += "line\n";
  set("line|\n" + text);
  host_->scroll_to({0, top + 120 * row});
  auto const first = view_->document();
  first->openDocument();
  view_->setDocument(WynDocument::document());
  EXPECT_EQ(host_->visible_rect().y, 0);
  view_->setDocument(first);
  EXPECT_EQ(host_->visible_rect().y, top + 120 * row);
  EXPECT_EQ(get(), "line|\n" + text);
  view_->setDocument(nullptr);
  first->closeDocument();
}

TEST_F(text_view, flashes_the_partner_of_a_closing_bracket) {
  set("(a(b|");
  view_->insert_text(u")");
  EXPECT_EQ(view_->flashed(), (platform::rect{left + 2 * cell, top, cell, row}));
  desktop_.loop().run_for(0.1);
  EXPECT_FALSE(view_->flashed());
  view_->insert_text(u"}");
  EXPECT_FALSE(view_->flashed());
  set("\"a|");
  view_->insert_text(u"\"");
  EXPECT_TRUE(view_->flashed());
}

TEST_F(text_view, blinks_while_it_has_the_keys) {
  set("|a");
  view_->focus_changed();
  EXPECT_TRUE(view_->caretIsVisible());
  desktop_.loop().run_for(0.6);
  EXPECT_FALSE(view_->caretIsVisible());
  view_->insert_text(u"b");
  EXPECT_TRUE(view_->caretIsVisible());
  host_->focused = false;
  view_->focus_changed();
  desktop_.loop().run_for(0.6);
  EXPECT_TRUE(view_->caretIsVisible());
  EXPECT_NE(drawn().back().rfind("fill", 0), 0u);
}

TEST_F(text_view, a_line_height_delta_takes_the_leading_away) {
  set("|a");
  EXPECT_EQ(caret_rectangle(*view_).height, 16);
  platform::user_defaults::standard().set("WynLineHeightDelta", -2);
  view_->setFontSize(24);
  view_->setFontSize(12);
  EXPECT_EQ(caret_rectangle(*view_).height, 14);
}

TEST_F(text_view, an_overwriting_caret_is_a_cell_wide_also_at_the_line_end) {
  set("a|b");
  view_->setOverwriteMode(true);
  EXPECT_EQ(caret_rectangle(*view_), (platform::rect{left + cell, top + row - 1, cell, 1}));
  set("ab|\nc");
  EXPECT_EQ(caret_rectangle(*view_), (platform::rect{left + 2 * cell, top + row - 1, cell, 1}));
  view_->insert_text(u"x");
  EXPECT_EQ(get(), "abx|\nc");
  set("|ab\nc");
  view_->insert_text(u"xyz");
  EXPECT_EQ(get(), "xyz|\nc");
}

TEST_F(text_view, undo_and_redo_bring_the_selection_and_show_it) {
  std::string text = "[one]";
  for (int n = 0; n < 200; ++n) text += "\nline";
  set(text);
  view_->performSelectorWithObject("delete:", {});
  view_->performSelectorWithObject("moveToEndOfDocument:", {});
  EXPECT_GT(host_->visible_rect().y, 0);
  view_->performSelectorWithObject("undo:", {});
  EXPECT_EQ(get(), text);
  EXPECT_EQ(host_->visible_rect().y, 0);
  view_->performSelectorWithObject("redo:", {});
  EXPECT_EQ(get(), "|" + text.substr(5));
  EXPECT_EQ(desktop_.beeps, 0);
}

TEST_F(text_view, an_action_marks_only_what_it_has_changed) {
  set("one\ntw|o\nthree");
  host_->dirty.clear();
  view_->insert_text(u"x");
  for (platform::rect const& r : host_->dirty) {
    EXPECT_GE(r.y, top + row);
    EXPECT_LE(r.bottom(), top + 2 * row);
  }
  EXPECT_FALSE(host_->dirty.empty());
  host_->dirty.clear();
  view_->performSelectorWithObject("moveRightAndModifySelection:", {});
  view_->performSelectorWithObject("moveDownAndModifySelection:", {});
  ASSERT_FALSE(host_->dirty.empty());
  for (platform::rect const& r : host_->dirty) EXPECT_GE(r.y, top + row);
}

TEST_F(text_view, repeated_typing_ends_when_the_caret_leaves) {
  set("{ab\ncd\ne}f");
  view_->insert_text(u"x");
  view_->insert_text(u"y");
  EXPECT_EQ(marked_text::text_of(*view_->view()->storage), "xyb\nxyd\nxyf");
  view_->performSelectorWithObject("moveToEndOfLine:", {});
  view_->insert_text(u"!");
  EXPECT_EQ(get(), "xyb!|\nxyd\nxyf");
  for (int n = 0; n < 3; ++n) view_->performSelectorWithObject("undo:", {});
  EXPECT_EQ(get(), "{ab\ncd\ne}f");
}

TEST_F(text_view, a_double_or_triple_click_in_an_empty_document_is_no_failure) {
  click(0, 0, 2);
  click(0, 0, 3);
  click(5, 5, 2);
  EXPECT_EQ(desktop_.beeps, 0);
  EXPECT_EQ(get(), "|");
}

TEST_F(text_view, text_sizes_stay_within_bounds) {
  for (int n = 0; n < 30 && view_->canMakeFontBigger(); ++n)
    view_->performSelectorWithObject("makeTextLarger:", {});
  EXPECT_EQ(desktop_.beeps, 0);
  double const largest = view_->fontSize();
  view_->performSelectorWithObject("makeTextLarger:", {});
  EXPECT_EQ(desktop_.beeps, 1);
  EXPECT_EQ(view_->fontSize(), largest);
  view_->performSelectorWithObject("makeTextStandardSize:", {});
  EXPECT_EQ(view_->fontSize(), 12);
  while (view_->canMakeFontSmaller()) view_->performSelectorWithObject("makeTextSmaller:", {});
  EXPECT_GE(view_->fontSize(), 4);
}

}  // namespace
