#include "app_fixture.h"

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
    std::size_t offset = 0;
    std::u16string const line = controller.textView().line_text(offset);
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
