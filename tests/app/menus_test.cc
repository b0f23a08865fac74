#include "app_fixture.h"
#include "keys/WynKeyBindingManager.h"
#include "keys/displayed_keys.h"
#include "keys/mnemonics.h"
#include "platform/utf.h"
#include "windows/program_actions.h"

#include <set>

// The real menus, in what they show and what their keys do.
namespace {

using items = std::vector<platform::menu_item>;

class real_menus : public app_test {
 protected:
  real_menus() { app().newDocument(); }
  /// Each menu with its place, also those in others and those of the status bar.
  std::vector<std::pair<std::string, items>> all() {
    std::vector<std::pair<std::string, items>> result;
    std::function<void(std::string const&, items const&)> const add = [&](std::string const& place,
                                                                          items const& list) {
      result.emplace_back(place, list);
      for (platform::menu_item const& item : list)
        if (!item.items.empty()) add(place + "/" + item.title, item.items);
    };
    add("", app().mainMenu());
    add("context", app().contextMenu());
    for (char const* part : {"lineNumber", "fileEncoding", "lineEnding", "tabSize", "softTabs"})
      add(part, app().statusMenu(part));
    return result;
  }
  windows::document_window& front() { return *app().orderedControllers().front(); }
  platform::menu_item validated(platform::menu_item item) {
    if (auto* const target = platform::target_for_selector(&front().textView(), item.selector))
      target->validateMenuItem(item);
    return item;
  }
};

TEST_F(real_menus, have_a_letter_for_each_entry) {
  for (auto const& [place, list] : all()) {
    std::vector<keys::mnemonic_title> titles;
    for (platform::menu_item const& item : list) titles.push_back({item.title, item.mnemonic});
    auto const places = keys::mnemonic_places(titles);
    for (std::size_t i = 0; i < list.size(); ++i) {
      // Of a number such as 16, all digits may be others' already.
      if (list[i].title.find_first_not_of("0123456789") == std::string::npos) continue;
      EXPECT_NE(places[i], std::string::npos) << place << "/" << list[i].title;
    }
  }
}

TEST_F(real_menus, give_lists_a_title_of_its_own_for_each_entry) {
  for (platform::menu_item const& menu : app().mainMenu()) {
    std::set<std::string> titles;
    for (auto const& action : windows::program_actions({menu}, {}, &front().textView()))
      EXPECT_TRUE(titles.insert(action.title).second) << menu.title << ": " << action.title;
  }
}

// A binding comes before the menu of the letter.
TEST_F(real_menus, open_by_letters_that_no_binding_has) {
  items const bar = app().mainMenu();
  std::vector<keys::mnemonic_title> titles;
  for (platform::menu_item const& item : bar) titles.push_back({item.title, item.mnemonic});
  auto const places = keys::mnemonic_places(titles);
  WynKeyBindingManager const manager({source_file("share/KeyBindings.dict")});
  for (std::size_t i = 0; i < bar.size(); ++i) {
    auto const letter = static_cast<char>(std::tolower(bar[i].title[places[i]]));
    EXPECT_FALSE(manager.keyBindings().contains(std::string("~") + letter)) << bar[i].title;
  }
}

// A key that stands in two menus does nothing at all.
TEST_F(real_menus, have_each_key_once) {
  std::map<std::string, std::string> places;
  for (auto const& [place, list] : all())
    if (place.empty() || place.starts_with("/"))
      for (platform::menu_item const& item : list)
        if (!item.key.empty())
          EXPECT_TRUE(places.emplace(item.key, item.title).second)
              << item.title << " and " << places[item.key];
}

TEST_F(real_menus, say_what_is_a_choice_and_what_a_switch) {
  app().newProject();
  std::size_t choices = 0, switches = 0;
  for (auto const& [place, list] : all())
    for (platform::menu_item const& item : list) {
      if (item.selector.empty()) continue;
      platform::menu_item const shown = validated(item);
      bool const is_choice =
          item.selector.starts_with("take") || item.selector == "orderFrontRightMarginPanel:";
      EXPECT_EQ(shown.exclusive, is_choice) << place << "/" << item.title;
      EXPECT_EQ(shown.checkable, is_choice || (item.selector.starts_with("toggle") &&
                                               item.selector != "toggleComment:" &&
                                               item.selector != "toggleFolding:" &&
                                               item.selector != "toggleColumnSelection:" &&
                                               item.selector != "toggleCurrentBookmark:" &&
                                               item.selector != "toggleMacroRecording:"))
          << place << "/" << item.title;
      ++(is_choice ? choices : switches);
    }
  EXPECT_GT(choices, 20U);
  EXPECT_GT(switches, 100U);
}

TEST_F(real_menus, list_their_keys_with_those_of_bindings) {
  desktop.pickers().choose = [](platform::picker_source& source) {
    auto const first = [&](char const* filter) {
      source.set_filter(filter);
      return source.count() == 0 ? std::string()
                                 : unicode::to_utf8(source.row(0).title) + "|" +
                                       keys::displayed_keys(source.row(0).keys);
    };
    EXPECT_EQ(first("ctrl+d"), "Select: Word|Ctrl+D");
    EXPECT_EQ(first("alt + up"), "Move Lines Up|Alt+Up");
    EXPECT_EQ(first("move lines down"), "Move Lines Down|Alt+Down");
    EXPECT_EQ(first("no such thing"), "");
    EXPECT_NE(source.note(), "");
    source.set_filter("");
    EXPECT_GT(source.count(), 150U);
    first("full screen");
    return std::optional<std::size_t>(0);
  };
  perform(front(), "showKeyboardShortcuts:");
  EXPECT_TRUE(window_of(front()).full_screen);
  perform(front(), "enterStatusBar:");
  EXPECT_EQ(window_of(front()).status_bar_entries, 1);
  perform(front(), "openMenuBar:");
  EXPECT_EQ(window_of(front()).menu_openings, 1);
}

TEST_F(real_menus, have_the_names_that_the_status_bar_shows) {
  std::size_t compared = 0;
  for (auto const& [place, list] : all())
    for (platform::menu_item const& item : list) {
      char const* const part = item.selector == "takeFileEncodingFrom:" ? "fileEncoding"
                               : item.selector == "takeLineEndingFrom:" ? "lineEnding"
                                                                        : nullptr;
      if (part == nullptr) continue;
      front().textView().tryToPerformWith(item.selector, item.argument);
      bool const is_ascii = item.title == "ASCII";
      EXPECT_EQ(window_of(front()).values[part].string_or(""), is_ascii ? "UTF-8" : item.title);
      ++compared;
    }
  EXPECT_GE(compared, 10U);
}

TEST_F(real_menus, help_shows_the_manual_and_the_version) {
  perform(front(), "showDocumentation:");
  EXPECT_EQ(windows().front(), "editing.md");
  perform(front(), "showAbout:");
  ASSERT_EQ(desktop.alerts().shown.size(), 1U);
  EXPECT_TRUE(desktop.alerts().shown[0].title.starts_with("Quirnote 0."));
}

}  // namespace
