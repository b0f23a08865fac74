#include "bundle_fixture.h"

#include "bundles/bundle_watcher.h"
#include "platform/notification_center.h"

using namespace bundles;

// What happens to files while the program runs is seen, and told once.
TEST_F(bundle_test, changes_on_disk_are_picked_up) {
  std::string const demo = "share/Bundles/Demo.qnbundle/", own = "data/Quirnote/Bundles/";
  put(demo + "info.plist", "{ uuid = B; name = Demo; }");
  put(demo + "Snippets/a.plist", "{ uuid = S; name = One; }");
  put(demo + "Templates/t.qnTemplate/info.plist", "{ uuid = P; name = Page; }");
  auto const listing = [&] {
    std::string result;
    for (auto const& item : manager().bundleItems()) result += item->name() + " ";
    return result;
  };
  EXPECT_EQ(listing(), "One Page ");
  int told = 0;
  auto const token = platform::notification_center::standard().observe(
      BundleManager::did_change, [&](auto const&) { ++told; });
  bundle_watcher const watcher(manager());
  struct {
    char const* what;
    std::function<void()> change;
    std::string items;
  } const steps[] = {
      {"nothing", [] {}, "One Page "},
      {"in place", [&] { put(demo + "Snippets/a.plist", "{ uuid = S; name = Uno; }"); },
       "Uno Page "},
      {"a template in place",
       [&] { put(demo + "Templates/t.qnTemplate/info.plist", "{ uuid = P; name = Pagina; }"); },
       "Uno Pagina "},
      {"a new folder in a bundle",
       [&] { put(demo + "Commands/c.plist", "{ uuid = C; name = Cut; }"); }, "Cut Uno Pagina "},
      {"in the new folder", [&] { put(demo + "Commands/d.plist", "{ uuid = D; name = Dup; }"); },
       "Cut Dup Uno Pagina "},
      {"a deleted file", [&] { std::filesystem::remove(folder / (demo + "Commands/c.plist")); },
       "Dup Uno Pagina "},
      {"a bundle where no folder was",
       [&] {
         put(own + "x.qnbundle/info.plist", "{ uuid = X; name = Own; }");
         put(own + "x.qnbundle/Snippets/a.plist", "{ uuid = Y; name = Mine; }");
       },
       "Mine Dup Uno Pagina "},
      {"a broken one", [&] { folder.write(own + "x.qnbundle/info.plist", "<plist>"); },
       "Dup Uno Pagina "},
      {"a mended one", [&] { put(own + "x.qnbundle/info.plist", "{ uuid = X; name = Own; }"); },
       "Mine Dup Uno Pagina "},
      {"a bundle that vanishes", [&] { std::filesystem::remove_all(folder / demo); }, "Mine "},
  };
  desktop.loop().run_for(3);
  for (auto const& step : steps) {
    told = 0;
    step.change();
    desktop.loop().run_for(3);
    EXPECT_EQ(listing(), step.items) << step.what;
    EXPECT_EQ(told, step.what == std::string("nothing") ? 0 : 1) << step.what;
  }
}
