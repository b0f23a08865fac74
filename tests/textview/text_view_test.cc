#include "headless/recording_graphics.h"
#include "layout/geometry.h"
#include "platform/user_defaults.h"
#include "platform/utf.h"
#include "text/views/view_filter.h"
#include "textview/shown_view.h"

namespace {

constexpr double cell = 8, row = 16, left = 4, top = 2;

class text_view : public shown_view_test, public shown_view {
 protected:
  static platform::point at(double line, double column) {
    return {left + column * cell + 1, top + line * row + 5};
  }
  platform::mouse_event event(double line, double column, int clicks = 1,
                              std::uint32_t modifiers = 0) const {
    return {at(line, column), platform::mouse_button::left, clicks, modifiers};
  }
  std::vector<std::string> drawn() {
    headless::recording_graphics g;
    view.draw(g, host.visible_rect());
    return g.operations();
  }
  bool has_drawn(std::string const& operation) {
    auto const all = drawn();
    return std::find(all.begin(), all.end(), operation) != all.end();
  }
};

TEST_F(text_view, a_drag_held_below_the_window_scrolls_and_selects) {
  set("|" + repeated("line\n", 100));
  view.mouse_down(event(0, 2));
  view.mouse_dragged(event(30, 2));
  desktop_.loop().run_for(2);
  EXPECT_GT(host.visible_rect().y, 20 * row);
  view.mouse_up(event(30, 2));
  double const y = host.visible_rect().y;
  desktop_.loop().run_for(2);
  EXPECT_EQ(host.visible_rect().y, y);
  EXPECT_TRUE(view.view()->has_selection());
}

TEST_F(text_view, keeps_no_copy_of_what_was_selected_for_undo) {
  set("[abc]def");
  perform("copy:");
  ASSERT_FALSE(view.view()->selection.data.empty());
  perform("delete:");
  EXPECT_TRUE(view.view()->saved_selection.data.empty());
  perform("undo:");
  EXPECT_EQ(get(), "[abc]def");
}

TEST_F(text_view, draws_only_what_the_dirty_rectangle_meets) {
  set("|" + repeated("line\n", 1000));
  headless::recording_graphics g;
  view.draw(g, {0, top + 10 * row, 640, row});
  std::size_t rows = 0;
  for (auto const& operation : g.operations())
    rows += operation.find("\"line") != std::string::npos;
  EXPECT_LE(rows, 2u);
}

TEST_F(text_view, numbers_lines_in_a_gutter_that_stays_when_scrolled_sideways) {
  settings::store().set("WynTextViewLineNumbersEnabled", true);
  set("|one\ntwo\n" + std::string(500, 'x'));
  EXPECT_TRUE(has_drawn("text 14,14 \"1\" #161616"));
  EXPECT_TRUE(has_drawn("text 14,30 \"2\" #6d6d6d"));
  perform("moveToEndOfDocument:");
  double const x = host.visible_rect().x;
  EXPECT_GT(x, 0);
  EXPECT_TRUE(has_drawn("text " + std::to_string(static_cast<int>(x) + 14) + ",14 \"1\" #6d6d6d"));
}

TEST_F(text_view, wraps_lines_to_what_is_visible) {
  set("|aaaa bbbb cccc dddd\nxx\n" + std::string(40, 'y'));
  view.setSoftWrap(true);
  EXPECT_EQ(host.frame_size.width, 640);
  host.resize({4 + 12 + 11 * cell + 4, 384});
  EXPECT_EQ(view.view()->screen_width, 10u);
  // The gutter marks the rows that go on; a long word is cut and yet all of it shows.
  EXPECT_EQ(host.frame_size.width, host.visible_rect().width);
  EXPECT_EQ(view.view()->lines(), 7u);
  EXPECT_TRUE(has_drawn("text 16,14 \"aaaa bbbb \" #000000"));
  EXPECT_TRUE(has_drawn("text 16,30 \"cccc dddd\" #000000"));
  EXPECT_TRUE(has_drawn("text 16,62 \"yyyyyyyyyy\" #000000"));
  EXPECT_TRUE(has_drawn("text 16,78 \"yyyyyyyyyyy\" #000000"));
  settings::store().set("WynTextViewShowSoftWrapInGutterEnabled", false);
  EXPECT_EQ(view.layout().gutterWidth(), 0);
  EXPECT_EQ(view.view()->screen_width, 11u);
  view.setSoftWrap(false);
  EXPECT_EQ(view.view()->lines(), 3u);
  EXPECT_GT(host.frame_size.width, host.visible_rect().width);

  WynTextView other;
  EXPECT_FALSE(other.softWrap());
  other.setSoftWrap(true);
  EXPECT_FALSE(view.softWrap());
}

TEST_F(text_view, keeps_the_top_line_when_lines_are_wrapped_anew) {
  set("|" + repeated("some words that fill a line and more\n", 200));
  view.setSoftWrap(true);
  host.scroll_to({0, top + 100 * row});
  host.resize({200, 384});
  EXPECT_GT(view.view()->lines(), 300u);
  std::size_t const first = view.layout().row_at(host.visible_rect().y);
  EXPECT_EQ(view.view()->begin(first).base.pos(), text::pos(100, 0));
}

TEST_F(text_view, shows_bookmarks_that_a_click_in_the_gutter_sets) {
  set("one\ntwo\nth|ree");
  EXPECT_EQ(validated("toggleCurrentBookmark:").title, "Add Bookmark");
  EXPECT_EQ(view.layout().gutterWidth(), 0);
  perform("toggleCurrentBookmark:");
  EXPECT_EQ(validated("toggleCurrentBookmark:").title, "Remove Bookmark");
  EXPECT_TRUE(has_drawn("image 1,36 12x12 BookmarkFlag"));

  platform::point const in_flags{5, top + 5};
  shown_view::click(in_flags);
  EXPECT_TRUE(view.view()->has_bookmark(0));
  EXPECT_EQ(get(), "one\ntwo\nth|ree");
  perform("goToNextBookmark:");
  EXPECT_EQ(get(), "|one\ntwo\nthree");
  shown_view::click(in_flags);
  EXPECT_FALSE(view.view()->has_bookmark(0));
  settings::store().set("WynTextViewShowBookmarksInGutterEnabled", false);
  EXPECT_EQ(view.layout().gutterWidth(), 0);
}

TEST_F(text_view, keeps_the_caret_in_sight) {
  set("|" + std::string(300, 'x'));
  perform("moveToEndOfLine:");
  EXPECT_TRUE(view.visibleTextRect().contains(layout::caret_rectangle(view)));
  perform("moveToBeginningOfLine:");
  EXPECT_EQ(host.visible_rect().x, 0);
}

TEST_F(text_view, shows_marked_text_before_it_is_part_of_the_text) {
  set("ab|cd");
  view.set_marked_text(u"\u306b", 1, 0);
  EXPECT_EQ(get(), "ab|cd");
  auto const all = drawn();
  EXPECT_TRUE(std::any_of(all.begin(), all.end(), [](auto const& o) {
    return o.find("\u306b\" #000000 underline") != std::string::npos;
  }));
  EXPECT_TRUE(has_drawn("text 36,14 \"cd\" #000000"));
}

TEST_F(text_view, shows_marked_text_at_the_end_of_a_selection) {
  set("a]bc[d");
  view.set_marked_text(u"x", 1, 0);
  EXPECT_TRUE(has_drawn("text 28,14 \"x\" #000000 underline"));
  EXPECT_EQ(view.caret_rect().x, 36);
}

TEST_F(text_view, a_click_goes_to_the_nearer_edge_of_a_wide_character) {
  set("|a\u4e2d\u6587b");
  double const left = view.layout().x_of_column(0), cell = view.layout().charWidth();
  std::pair<double, std::uint32_t> const clicks[] = {{0.4, 0}, {0.9, 1}, {1.9, 1}, {2.1, 2},
                                                     {3.9, 2}, {4.1, 3}, {5.4, 3}, {5.6, 4}};
  for (auto const& [column, unit] : clicks) {
    auto const at =
        layout::position_at(view, {left + column * cell, 5}, text::freehanded_t::automatic);
    EXPECT_EQ(at.base.column, unit) << column;
  }
}

// By the metrics of a screen on which a logical pixel is no whole number of device pixels.
TEST_F(text_view, cells_are_whole_device_pixels_at_any_scale) {
  struct scaled_host : headless::headless_view_host {
    using headless_view_host::headless_view_host;
    platform::font_metrics metrics_for(platform::font const& f) const override {
      auto metrics = headless_view_host::metrics_for(f);
      metrics.pixel = 1 / ratio;
      metrics.char_width = std::round(metrics.char_width * ratio) / ratio;
      return metrics;
    }
    double ratio = 1;
  };
  for (double const ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
    WynTextView shown;
    scaled_host scaled(shown);
    double const width_before = shown.layout().charWidth();
    scaled.ratio = ratio;
    shown.font_metrics_changed();
    TextLayout const& layout = shown.layout();
    EXPECT_EQ(layout.charWidth(), std::round(width_before * ratio) / ratio);
    double const cell = std::round(layout.charWidth() * ratio);
    for (std::size_t n = 0; n < 200; ++n) {
      double const pixels = (layout.x_of_column(n) - layout.x_of_column(0)) * ratio;
      ASSERT_NEAR(pixels, cell * static_cast<double>(n), 1e-6) << ratio;
      double const rows = (layout.y_of_row(n) - layout.y_of_row(0)) * ratio;
      ASSERT_NEAR(rows, std::round(rows), 1e-6) << ratio;
    }
  }
}

TEST_F(text_view, shows_what_another_view_does_to_its_document) {
  set("one|");
  WynTextView other;
  other.setDocument(view.document());
  double const height = host.frame_size.height;
  host.dirty.clear();
  other.insert_text(u"a\nb");
  other.insert_text(u"c");
  EXPECT_TRUE(host.dirty.empty());  // until the other one is done
  desktop_.loop().run_for(0);
  EXPECT_EQ(host.dirty, std::vector{host.visible_rect()});
  EXPECT_EQ(host.frame_size.height, height + row);
  other.setDocument(nullptr);
}

TEST_F(text_view, a_click_abandons_marked_text) {
  set("ab|cd");
  view.set_marked_text(u"x", 1, 0);
  click(at(0, 0));
  EXPECT_EQ(get(), "|abcd");
  EXPECT_EQ(host.compositions_abandoned, 1);
}

TEST_F(text_view, an_input_method_replaces_what_is_around_the_caret_in_one_step) {
  struct {
    char const* before;
    std::ptrdiff_t offset;
    std::size_t length;
    std::u16string_view text;
    char const* after;
  } const table[] = {{"ab cd|", -2, 2, u"xy", "ab xy|"},
                     {"one\nt|wo\nx", -9, 99, u"z", "one\nz|\nx"},
                     {"a|bc", 1, 1, u"", "ab|"},
                     {"[ab]c", 0, 1, u"x", "abx|"}};
  for (auto const& [before, offset, length, text, after] : table) {
    set(before);
    view.set_marked_text(u"m", 1, 0);
    view.replace_surrounding_text(offset, length, text);
    EXPECT_EQ(get(), after);
    EXPECT_TRUE(view.markedText().empty());
    perform("undo:");
    EXPECT_EQ(get(), before);
  }
}

TEST_F(text_view, gives_input_methods_the_line_with_caret_and_anchor) {
  auto const given = [this] {
    platform::caret_context const around = view.text_around_caret();
    return std::tuple(around.text, around.caret, around.anchor);
  };
  set("ab|cd\nef");
  EXPECT_EQ(given(), std::tuple(u"abcd", 2U, 2U));
  perform("moveRightAndModifySelection:");
  EXPECT_EQ(given(), std::tuple(u"abcd", 3U, 2U));
  perform("moveDownAndModifySelection:");
  EXPECT_EQ(given(), std::tuple(u"ef", 2U, 0U));
  set(std::string(2000, 'x') + "|" + std::string(2000, 'y'));
  EXPECT_EQ(std::get<1>(given()), 500U);
  EXPECT_EQ(std::get<0>(given()).size(), 1000U);
}

TEST_F(text_view, an_action_that_fails_beeps_and_leaves_no_step) {
  perform("undo:");
  EXPECT_EQ(desktop_.beeps, 1);
  perform("moveLeft:");
  EXPECT_EQ(desktop_.beeps, 2);
  EXPECT_FALSE(view.view()->can_undo());
}

TEST_F(text_view, answers_for_selectors_as_menus_and_keys_need) {
  for (char const* name : {"moveLeft:", "moveRight:", "moveUp:", "moveDown:"})
    EXPECT_FALSE(view.respondsToSelector(name)) << name;
  EXPECT_TRUE(view.respondsToSelector("moveWordLeft:"));
  EXPECT_TRUE(view.respondsToSelector("deleteBackward:"));
  EXPECT_TRUE(view.respondsToSelector("undo:"));
  EXPECT_FALSE(view.respondsToSelector("noSuchThing:"));
  set("ab|");
  perform("moveLeft:");
  EXPECT_EQ(get(), "a|b");
  EXPECT_FALSE(validated("cut:").enabled);
  set("[ab]");
  EXPECT_TRUE(validated("cut:").enabled);
  settings::store().set("WynTextViewLineNumbersEnabled", true);
  EXPECT_TRUE(validated("toggleLineNumbers:").checked);
}

TEST_F(text_view, publishes_what_the_status_bar_shows) {
  std::map<std::string, plist::value, std::less<>> values;
  view.bind([&](std::string_view key, plist::value const& v) {
    values.insert_or_assign(std::string(key), v);
  });
  set("one\n\ttwo|");
  perform("moveToBeginningOfLine:");
  perform("moveForward:");
  EXPECT_EQ(values["lineNumber"].integer_or(-1), 1);
  EXPECT_EQ(values["columnNumber"].integer_or(-1), 4);
  view.setTabSize(8);
  EXPECT_EQ(values["tabSize"].integer_or(-1), 8);
}

TEST_F(text_view, says_how_much_is_selected) {
  std::map<std::string, plist::value, std::less<>> values;
  view.bind([&](std::string_view key, plist::value const& v) {
    values.insert_or_assign(std::string(key), v);
  });
  for (auto const& [text, said] : std::vector<std::pair<char const*, char const*>>{
           {"a[bc d]e", "1 line, 4 characters, 2 words"},
           {"[one\ntwo_2, \u00e9t\u00e9\n]", "2 lines, 13 characters, 3 words"},
           {"[\n\n]x", "2 lines, 0 characters, 0 words"},
           {"x[👩\u200D👧e\u0301中文]", "1 line, 4 characters, 1 word"},
           {"a{bc\ndef\nghi}j", "3 lines, 6 characters, 3 words"}}) {
    set(text);
    desktop_.loop().run_for(1);
    EXPECT_EQ(values["selection"].string_or(""), said) << text;
  }
  set("a|b");
  EXPECT_EQ(values["selection"].string_or("?"), "");
}

TEST_F(text_view, comes_back_to_where_it_was) {
  std::string const text = "line|\n" + repeated("line\n", 300);
  set(text);
  host.scroll_to({0, top + 120 * row});
  auto const first = view.document();
  first->openDocument();
  view.setDocument(WynDocument::document());
  EXPECT_EQ(host.visible_rect().y, 0);
  view.setDocument(first);
  EXPECT_EQ(host.visible_rect().y, top + 120 * row);
  EXPECT_EQ(get(), text);
  view.setDocument(nullptr);
  first->closeDocument();
}

TEST_F(text_view, flashes_the_partner_of_a_closing_bracket) {
  set("(a(b|");
  view.insert_text(u")");
  EXPECT_EQ(view.flashed(), (platform::rect{left + 2 * cell, top, cell, row}));
  desktop_.loop().run_for(0.1);
  EXPECT_FALSE(view.flashed());
  view.insert_text(u"}");
  EXPECT_FALSE(view.flashed());
  set("\"a|");
  view.insert_text(u"\"");
  EXPECT_TRUE(view.flashed());
}

TEST_F(text_view, blinks_while_it_has_the_keys) {
  set("|a");
  view.focus_changed();
  EXPECT_TRUE(view.caretIsVisible());
  desktop_.loop().run_for(0.6);
  EXPECT_FALSE(view.caretIsVisible());
  view.insert_text(u"b");
  EXPECT_TRUE(view.caretIsVisible());
  host.focused = false;
  view.focus_changed();
  desktop_.loop().run_for(0.6);
  EXPECT_TRUE(view.caretIsVisible());
  EXPECT_NE(drawn().back().rfind("fill", 0), 0u);
}

TEST_F(text_view, a_line_height_delta_takes_the_leading_away) {
  set("|a");
  EXPECT_EQ(layout::caret_rectangle(view).height, 16);
  platform::user_defaults::standard().set("WynLineHeightDelta", -2);
  view.setFontSize(24);
  view.setFontSize(12);
  EXPECT_EQ(layout::caret_rectangle(view).height, 14);
}

TEST_F(text_view, an_overwriting_caret_is_a_cell_wide_also_at_the_line_end) {
  set("a|b");
  view.setOverwriteMode(true);
  EXPECT_EQ(layout::caret_rectangle(view), (platform::rect{left + cell, top + row - 1, cell, 1}));
  set("ab|\nc");
  EXPECT_EQ(layout::caret_rectangle(view),
            (platform::rect{left + 2 * cell, top + row - 1, cell, 1}));
}

TEST_F(text_view, undo_and_redo_bring_the_selection_and_show_it) {
  std::string const text = "[one]" + repeated("\nline", 200);
  set(text);
  perform("delete:");
  perform("moveToEndOfDocument:");
  EXPECT_GT(host.visible_rect().y, 0);
  perform("undo:");
  EXPECT_EQ(get(), text);
  EXPECT_EQ(host.visible_rect().y, 0);
  perform("redo:");
  EXPECT_EQ(get(), "|" + text.substr(5));
  EXPECT_EQ(desktop_.beeps, 0);
}

TEST_F(text_view, an_action_marks_only_what_it_has_changed) {
  set("one\ntw|o\nthree");
  host.dirty.clear();
  view.insert_text(u"x");
  for (platform::rect const& r : host.dirty) {
    EXPECT_GE(r.y, top + row);
    EXPECT_LE(r.bottom(), top + 2 * row);
  }
  EXPECT_FALSE(host.dirty.empty());
  host.dirty.clear();
  perform("moveRightAndModifySelection:");
  perform("moveDownAndModifySelection:");
  ASSERT_FALSE(host.dirty.empty());
  for (platform::rect const& r : host.dirty) EXPECT_GE(r.y, top + row);
}

TEST_F(text_view, text_sizes_stay_within_bounds) {
  for (int n = 0; n < 30 && view.canMakeFontBigger(); ++n) perform("makeTextLarger:");
  EXPECT_EQ(desktop_.beeps, 0);
  double const largest = view.fontSize();
  perform("makeTextLarger:");
  EXPECT_EQ(desktop_.beeps, 1);
  EXPECT_EQ(view.fontSize(), largest);
  perform("makeTextStandardSize:");
  EXPECT_EQ(view.fontSize(), 12);
  while (view.canMakeFontSmaller()) perform("makeTextSmaller:");
  EXPECT_GE(view.fontSize(), 4);
}

}  // namespace
