#include "headless/recording_graphics.h"
#include "path/temporary_folder.h"
#include "settings/table.h"
#include "styles/scoped_settings.h"
#include "styles/view_colors.h"
#include "styles/wrap_columns.h"
#include "textview/shown_view.h"

// Options on the desktop without windows, with defaults in a file that others may write, too.
namespace {

class options : public testing::Test {
 protected:
  static platform::user_defaults& own() { return platform::user_defaults::standard(); }
  /// As another process does it, and then the run loop here.
  void set_elsewhere(char const* key, plist::value v) {
    own().check_for_changes();
    platform::user_defaults other(folder_ / "defaults.plist");
    other.set(key, std::move(v));
    ASSERT_TRUE(other.save());
    own().check_for_changes();
  }

  temporary_folder folder_;
  own_defaults const defaults_{folder_ / "defaults.plist"};
  headless::headless_desktop desktop_;
};

TEST_F(options, the_nearest_scope_and_then_the_newest_entry_wins) {
  auto const entry = [](int size, double date) {
    return plist::value(plist::dictionary{{"tabSize", size}, {"updated", plist::date{date}}});
  };
  own().set("Domain", plist::dictionary{{"source.c", entry(8, 1)},
                                        {"source.c.extra", entry(2, 9)},
                                        {"source.python", entry(4, 5)},
                                        {"text.plain", entry(3, 7)},
                                        {"", entry(5, 0)},
                                        {"broken", "no dictionary"}});
  struct row {
    char const* scope;
    int size;
  };
  for (row const& expected : {row{"source.c", 2}, row{"source.c.other", 2}, row{"source.ada", 2},
                              row{"source.python", 4}, row{"text", 3}, row{"", 5}, row{"x.y", 2}})
    EXPECT_EQ(scoped_settings::value_for(expected.scope, "tabSize", "Domain").integer_or(0),
              expected.size)
        << expected.scope;
  scoped_settings::set_value("source.c", 6, "tabSize", "Domain");
  EXPECT_EQ(scoped_settings::value_for("source.c", "tabSize", "Domain").integer_or(0), 6);
  EXPECT_FALSE(scoped_settings::value_for("source.c", "tabSize", "NoDomain"));
}

TEST_F(options, of_a_document_are_stored_for_later_views_only) {
  shown_view first, second;
  first.view.setTabSize(8);
  first.view.setSoftTabs(true);
  first.view.setSoftWrap(true);
  first.view.setRightMargin(30);
  // Any other default that changes must not carry them over.
  settings::store().set("WynTextViewLineNumbersEnabled", true);
  EXPECT_TRUE(second.view.lineNumbers());
  EXPECT_EQ(second.view.tabSize(), 4u);
  EXPECT_FALSE(second.view.softTabs());
  EXPECT_FALSE(second.view.softWrap());
  EXPECT_EQ(second.view.rightMargin(), -1);
  shown_view third;
  EXPECT_EQ(third.view.view()->tab_size, 8u);
  EXPECT_TRUE(third.view.view()->treats_spaces_as_tabs);
  EXPECT_TRUE(third.view.view()->soft_wrap);
  EXPECT_EQ(third.view.view()->screen_width, 30u);
}

TEST_F(options, follow_what_another_program_stores) {
  shown_view shown;
  double const width = shown.view.layout().charWidth();
  set_elsewhere("WynTextViewNormalFontSize", 24);
  EXPECT_EQ(shown.view.layout().charWidth(), 2 * width);
  set_elsewhere("WynTextViewLineNumbersEnabled", true);
  EXPECT_GT(shown.view.layout().gutterWidth(), 0);
  set_elsewhere("WynTextViewFreehandedModeEnabled", true);
  EXPECT_TRUE(shown.view.view()->freehanded_mode);
  set_elsewhere("WynTextViewTabSize", 7);
  EXPECT_EQ(shown.view.view()->tab_size, 7u);
  set_elsewhere("WynTextViewRightMarginColumn", 25);
  set_elsewhere("WynTextViewSoftWrap", true);
  EXPECT_EQ(shown.view.view()->screen_width, 25u);
  set_elsewhere("WynTextViewTabSize", "no number");
  EXPECT_EQ(shown.view.view()->tab_size, 4u);
}

TEST_F(options, each_switch_has_an_action_with_a_tick) {
  shown_view shown;
  std::size_t count = 0;
  for (settings::setting const& row : settings::all()) {
    std::string const& selector = row.changed_by.selector;
    if (!selector.starts_with("toggle") || !shown.view.respondsToSelector(selector)) continue;
    ++count;
    bool const before = shown.validated(selector.c_str()).checked;
    shown.view.performSelectorWithObject(selector, {});
    EXPECT_NE(shown.validated(selector.c_str()).checked, before) << selector;
    if (row.changed_by.is_switch) EXPECT_NE(own().boolean(row.key), before) << row.key;
    shown.view.performSelectorWithObject(selector, {});
    EXPECT_EQ(shown.validated(selector.c_str()).checked, before) << selector;
  }
  EXPECT_GT(count, 17u);
}

TEST_F(options, lines_are_wrapped_at_a_column_whatever_the_window) {
  shown_view shown;
  shown.set("|aaaa bbbb cccc dddd");
  shown.view.setSoftWrap(true);
  shown.view.performSelectorWithObject("takeRightMarginFrom:", 10);
  EXPECT_EQ(shown.view.view()->lines(), 2u);
  shown.host.resize({60, 384});
  EXPECT_EQ(shown.view.view()->lines(), 2u);
  EXPECT_GT(shown.host.frame_size.width, 60);
  shown.view.performSelectorWithObject("takeRightMarginFrom:", 0);
  EXPECT_EQ(shown.view.rightMargin(), 10);
  shown.host.resize({640, 384});
  shown.view.performSelectorWithObject("takeRightMarginFrom:", -1);
  EXPECT_EQ(shown.view.view()->lines(), 1u);
  EXPECT_EQ(shown.host.frame_size.width, 640);
}

TEST_F(options, other_columns_are_asked_for_and_kept_in_the_menu) {
  shown_view shown;
  char const* const other = "orderFrontRightMarginPanel:";
  EXPECT_EQ(shown.validated(other).title, "Other\u2026");
  shown.view.setRightMargin(66);
  EXPECT_EQ(shown.validated(other).title, "Other (66)\u2026");
  EXPECT_TRUE(shown.validated(other).checked);
  desktop_.prompts().answers = {"90", "9x", "0"};
  for (int n = 0; n < 4; ++n) shown.view.performSelectorWithObject(other, {});
  EXPECT_EQ(desktop_.prompts().last_initial, "90");
  EXPECT_EQ(shown.view.rightMargin(), 90);
  EXPECT_EQ(desktop_.beeps, 2);  // cancelling is no failure
  EXPECT_FALSE(shown.validated(other).checked);
  std::string titles;
  for (auto const& item : wrap_columns::menu_items()) {
    titles += item.title + " ";
    EXPECT_EQ(shown.validated("takeRightMarginFrom:", item.argument).checked, item.title == "90");
  }
  EXPECT_EQ(titles, "40 72 78 80 90 100 120 ");
}

TEST_F(options, the_wrap_column_is_drawn_where_there_is_one) {
  shown_view shown;
  shown.set("|text");
  auto const drawn = [&] {
    headless::recording_graphics g;
    shown.view.draw(g, shown.host.visible_rect());
    std::string lines;
    for (auto const& operation : g.operations())
      if (operation.find(" 84,") != std::string::npos) lines += operation + "\n";
    return lines;
  };
  EXPECT_FALSE(shown.validated("toggleShowWrapMarginIndicator:").enabled);
  settings::store().set("WynTextViewShowWrapMarginIndicator", true);
  EXPECT_EQ(drawn(), "");
  shown.view.setRightMargin(10);
  EXPECT_EQ(drawn(), "fill 84,0 556x384 #f5f5f5\nfill 84,0 1x384 #cccccc\n");
  settings::store().set("WynTextViewHighlightWrapMargin", false);
  EXPECT_EQ(drawn(), "fill 84,0 1x384 #cccccc\n");
}

TEST_F(options, own_colours_stand_where_no_theme_has_its_own) {
  own().set("WynTextViewBackgroundColor", "#102030");
  own().set("WynTextViewForegroundColor", "#405060");
  own().set("WynTextViewSelectionColor", "#708090");
  platform::palette const desktop;
  platform::palette const plain = styles::styled_palette(desktop, {});
  EXPECT_EQ(plain.background, (platform::color{0x10, 0x20, 0x30, 255}));
  EXPECT_EQ(plain.foreground, (platform::color{0x40, 0x50, 0x60, 255}));
  EXPECT_EQ(plain.selection, (platform::color{0x70, 0x80, 0x90, 255}));
  EXPECT_TRUE(plain.dark);
  EXPECT_EQ(styles::view_colors(desktop, {}, true).selection, plain.selection);
  shown_view shown;
  shown.set("|text");
  headless::recording_graphics g;
  shown.view.draw(g, shown.host.visible_rect());
  EXPECT_EQ(std::count(g.operations().begin(), g.operations().end(), "text 4,14 \"text\" #405060"),
            1);
  auto const themed = styles::styled_palette(desktop, plist::dictionary{{"background", "#FFFFFF"}});
  EXPECT_EQ(themed.background, (platform::color{255, 255, 255, 255}));
  own().set("WynTextViewBackgroundColor", "no colour");
  EXPECT_EQ(styles::styled_palette(desktop, {}).background, desktop.background);
}

TEST_F(options, the_font_is_chosen_in_a_panel_within_bounds) {
  shown_view shown;
  shown.view.performSelectorWithObject("orderFrontFontPanel:", {});
  EXPECT_EQ(shown.view.layout().font().family, "monospace");
  desktop_.fonts().answers = {{"Other Mono", 500, true}};
  shown.view.performSelectorWithObject("orderFrontFontPanel:", {});
  EXPECT_EQ(shown.view.layout().font().family, "Other Mono");
  EXPECT_EQ(shown.view.fontSize(), 200);
  EXPECT_EQ(own().string("WynTextViewNormalFontName"), "Other Mono");
}

}  // namespace
