#include "app/app_fixture.h"
#include "settings/store.h"
#include "settings/table.h"

namespace {

/// The settings of the program in a file, as the user has them.
class settings_test : public app_test {
 protected:
  /// What another process reads.
  plist::value stored(std::string const& key) {
    return platform::user_defaults(folder / "Defaults.plist").get(key);
  }

 private:
  own_defaults const own_{folder / "Defaults.plist"};
};

void add_titles(std::vector<platform::menu_item> const& items,
                std::map<std::string, std::string>& titles) {
  for (platform::menu_item const& item : items) {
    titles.emplace(item.selector, item.title);
    add_titles(item.items, titles);
  }
}

TEST_F(settings_test, each_is_changed_by_an_action_that_is_there) {
  app().newDocument();
  WynTextView const& view = app().orderedControllers().front()->textView();
  std::map<std::string, std::string> titles;
  add_titles(app().mainMenu(), titles);
  for (settings::setting const& row : settings::all()) {
    std::string const& selector = row.changed_by.selector;
    EXPECT_TRUE(selector.empty() || view.respondsToSelector(selector) ||
                app().respondsToSelector(selector))
        << row.key;
    if (row.changed_by.is_switch) EXPECT_EQ(titles[selector], row.title) << row.key;
  }
}

TEST_F(settings_test, whatever_is_chosen_comes_back) {
  app().newDocument();
  WynTextView& view = app().orderedControllers().front()->textView();
  view.setTabSize(3);
  view.setRightMargin(77);
  view.setFontSize(17);
  std::size_t chosen = 0;
  for (std::string const& selector : view.selectors()) {
    if (!selector.starts_with("toggle") || !selector.ends_with(":")) continue;
    plist::dictionary const before = defaults().all();
    std::string const errors = errors_of([&] {
      view.performSelectorWithObject(selector, {});
      defaults().save();
    });
    EXPECT_EQ(errors, "") << selector;
    for (auto const& [key, value] : defaults().all()) {
      auto const former = before.find(key);
      if (former != before.end() && former->second == value) continue;
      EXPECT_EQ(stored(key), value) << selector << " " << key;
      EXPECT_NE(settings::find(key), nullptr) << key;
      ++chosen;
    }
  }
  EXPECT_GT(chosen, 10u);
  EXPECT_EQ(stored("WynTextViewNormalFontSize").real_or(0), 17);

  bool const soft = view.softTabs();
  WynTextView other;
  other.setDocument(WynDocument::document());
  EXPECT_EQ(other.softTabs(), soft);
  EXPECT_EQ(other.tabSize(), 3u);
  EXPECT_EQ(other.rightMargin(), 77);
  other.setDocument(nullptr);
}

}  // namespace
