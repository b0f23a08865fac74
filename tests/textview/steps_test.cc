#include "actions/WynPasteboardManager.h"
#include "data_rows.h"
#include "textview/shown_view.h"

// What keys, clicks, an input method and named actions do to a text, as the file says.
namespace {

class steps : public shown_view_test {
 protected:
  /// A press of a button or a part of it: "LINE,COLUMN", then perhaps "x2", "shift", "option".
  static platform::mouse_event mouse(data_row const& words, std::size_t place = 1) {
    double line = 0, column = 0;
    std::sscanf(words.at(place).c_str(), "%lf,%lf", &line, &column);
    platform::mouse_event event{
        {4 + column * 8 + 1, 2 + line * 16 + 5}, platform::mouse_button::left, 1, 0};
    std::string const& more = words.back();
    if (more[0] == 'x') event.click_count = more[1] - '0';
    if (more == "shift") event.modifiers = platform::modifier::shift;
    if (more == "option") event.modifiers = platform::modifier::option;
    if (words[0] == "middle") event.button = platform::mouse_button::middle;
    return event;
  }

  void perform(shown_view& shown, data_row const& words) {
    std::string const &what = words[0], &text = words.back();
    WynTextView& view = shown.view;
    if (what == "set") return shown.set(text);
    if (what == "do") return shown.perform(text);
    if (what == "press") return shown.press(marked_text::units(text));
    if (what == "commit") return view.insert_text(marked_text::units(text));
    if (what == "compose") return view.set_marked_text(marked_text::units(text), 1, 0);
    if (what == "margin") return view.setRightMargin(std::stoi(text));
    if (what == "unmark") return view.unmark_text();
    if (what == "wait") return desktop_.loop().run_for(std::stod(text));
    if (what == "primary") return desktop_.primary_selection().set({{"text", text}});
    if (what == "store") return (void)settings::store().set(words[1], text == "true");
    if (what == "down" || what == "middle") return view.mouse_down(mouse(words));
    if (what == "up") view.mouse_dragged(mouse(words)), view.mouse_up(mouse(words));
    if (what == "click") view.mouse_down(mouse(words)), view.mouse_up(mouse(words));
    if (what == "drag") {
      view.mouse_down(mouse(words));
      for (bool const ends : {false, true})
        ends ? view.mouse_up(mouse(words, 2)) : view.mouse_dragged(mouse(words, 2));
    }
    if (what == "alt") {
      view.modifiers_changed(platform::modifier::option);
      desktop_.loop().run_for(std::stod(text));
      view.modifiers_changed(0);
    }
  }
};

TEST_F(steps, lead_to_what_the_file_says) {
  for (std::string const& section : data_sections("view_steps.txt")) {
    SCOPED_TRACE(section);
    own_defaults const defaults;
    WynPasteboardManager::sharedInstance().clear();
    shown_view shown;
    for (data_row row : data_rows("view_steps.txt", section)) {
      std::string const expected = row.back();
      bool const is_checked = row.size() > 2 && row.end()[-2] == "=";
      if (is_checked) row.resize(row.size() - 2);
      perform(shown, row);
      if (is_checked) EXPECT_EQ(shown.get(), expected) << testing::PrintToString(row);
      EXPECT_EQ(desktop_.beeps, 0) << testing::PrintToString(row);
    }
  }
}

}  // namespace
