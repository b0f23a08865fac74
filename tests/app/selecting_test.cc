#include <thread>

#include "app_fixture.h"
#include "text/views/view.h"

// The box in which everything can be found, with the real menus and keys.
namespace {

class selecting : public app_test {
 protected:
  /// Chooses the first row for the letters.
  void choose(std::string const& letters) {
    desktop.pickers().choose = [letters](platform::picker_source& source) {
      source.set_filter(letters);
      return source.count() > 0 ? std::optional<std::size_t>(0) : std::nullopt;
    };
  }
  windows::document_window& document() {
    app().newDocument();
    return *app().orderedControllers().front();
  }
  static std::string text(windows::document_window& controller) {
    std::u16string const line = controller.textView().text_around_caret().text;
    return {line.begin(), line.end()};
  }
};

TEST_F(selecting, executes_menu_entries_and_key_bindings_in_the_front_window) {
  windows::document_window& controller = document();
  type(controller, u"one two");
  for (auto const& [letters, result] : std::vector<std::pair<char const*, char const*>>{
           {"delete word left", "one "}, {"deltobegoflin", ""}, {"undo", "one "}}) {
    choose(letters);
    perform(controller, "selectBundleItemFromList:");
    EXPECT_EQ(text(controller), result) << letters;
  }
  EXPECT_FALSE(desktop.waits().is_waiting());
}

TEST_F(selecting, does_nothing_when_cancelled_disabled_or_without_a_window) {
  app().performSelectorWithObject("selectBundleItemFromList:", {});
  EXPECT_EQ(desktop.beeps, 1);
  windows::document_window& controller = document();
  choose("undo");
  perform(controller, "selectBundleItemFromList:");
  desktop.pickers().choose = nullptr;
  perform(controller, "selectBundleItemFromList:");
  EXPECT_EQ(desktop.beeps, 1);
}

// Files, symbols, lines and actions are found in one box, of a window with one document too.
TEST_F(selecting, goes_to_what_is_typed) {
  std::filesystem::create_directories(folder / "p/.git");
  folder.write("p/one.c", "int first(void) {\n}\nint second(void) {\n}\n");
  folder.write("p/two.c", "a\nb\n");
  app().openFile(folder / "p/one.c");
  std::string typed;
  desktop.pickers().choose = [&](platform::picker_source& source) -> std::optional<std::size_t> {
    source.set_filter(typed);
    for (int n = 0; source.is_filling() && n < 20000; ++n) {
      desktop.loop().run_posted();
      source.take_new_rows(0);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (source.count() == 0) return std::nullopt;
    typed = source.note();
    return source.first_row();
  };
  auto const go = [&](char const* letters,
                      char const* selector = "goToFile:", plist::value const& argument = {}) {
    typed = letters;
    app().orderedControllers().front()->textView().tryToPerformWith(selector, argument);
    auto& front = *app().orderedControllers().front();
    return window_of(front).title + " " +
           std::to_string(front.textView().view()->selection.current_mark.base.line + 1);
  };
  EXPECT_EQ(go("two:2"), "two.c 2");
  EXPECT_EQ(go(""), "one.c 1");  // the previous one
  EXPECT_EQ(go(":3"), "one.c 3");
  EXPECT_EQ(go(">begdoc"), "one.c 1");
  EXPECT_EQ(go("nothing"), "one.c 1");
  EXPECT_EQ(typed, "nothing");
  EXPECT_EQ(go("@", "selectFromList:", "symbols"), "one.c 1");
  EXPECT_EQ(desktop.pickers().last_request.initial, "@");
  int times = 0;
  desktop.pickers().way = platform::picked_way::aside;
  auto const once = desktop.pickers().choose;
  desktop.pickers().choose = [&](platform::picker_source& source) {
    typed = "two";
    return ++times > 2 ? std::nullopt : once(source);
  };
  EXPECT_EQ(go(""), "one.c 1");  // stays in front, and so does the box
  EXPECT_EQ(times, 3);
  EXPECT_EQ(windows(), titles({"one.c", "two.c"}));
  EXPECT_EQ(desktop.beeps, 0);
}

TEST_F(selecting, looks_up_keys) {
  windows::document_window& controller = document();
  std::vector<std::u16string> shown;
  desktop.pickers().choose = [&](platform::picker_source& source) {
    for (char16_t const key : {u's', u'i', u'y'}) {
      source.take_key({{key}, {key}, platform::modifier::command, {}});
      shown.push_back(source.count() == 0 ? u"" : source.row(0).title);
    }
    return std::nullopt;
  };
  perform(controller, "selectBundleItemByKey:");
  EXPECT_TRUE(desktop.pickers().last_request.takes_keys);
  EXPECT_EQ(shown.front(), u"Save");
  EXPECT_EQ(shown[1], u"Incremental Search");
}

}  // namespace
