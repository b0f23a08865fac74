#include "app/app_fixture.h"
#include "platform/user_defaults.h"

namespace {

/// The settings of the program in a file, as the user has them.
class settings : public app_test {
 protected:
  settings() {
    AppDelegate::registerDefaults();
    WynTextView::registerDefaults();
  }

  /// What another process reads.
  plist::value stored(std::string const& key) {
    return platform::user_defaults(folder / "Defaults.plist").get(key);
  }

 private:
  own_defaults const own_{folder / "Defaults.plist"};
};

TEST_F(settings, whatever_one_begins_with_can_be_stored) {
  for (auto const& [key, value] : defaults().all()) {
    EXPECT_TRUE(defaults().set(key, value)) << key;
    EXPECT_TRUE(defaults().save()) << key;
    EXPECT_EQ(stored(key), value) << key;
  }
}

TEST_F(settings, whatever_is_chosen_comes_back) {
  app().newDocument();
  WynTextView& view = app().orderedControllers().front()->textView();
  view.setTabSize(3);
  view.setRightMargin(77);
  view.setFontSize(17);
  std::size_t chosen = 0;
  for (std::string const& selector : view.selectors()) {
    if (!selector.starts_with("toggle") || !selector.ends_with(":")) continue;
    plist::dictionary const before = defaults().all();
    testing::internal::CaptureStderr();
    view.performSelectorWithObject(selector, {});
    defaults().save();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << selector;
    for (auto const& [key, value] : defaults().all()) {
      auto const former = before.find(key);
      if (former != before.end() && former->second == value) continue;
      EXPECT_EQ(stored(key), value) << selector << " " << key;
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
