#include "bundle_fixture.h"

#include "bundles/check/known_keys.h"
#include "bundles/files/item_kinds.h"

namespace {

// Something that can't stand under the keys, `uuid` excepted.
plist::dictionary all_wrong(bundles::key_types const& keys, char const* uuid) {
  plist::dictionary result;
  for (auto const& [key, type] : keys) {
    using enum bundles::content_type;
    bool const wants_text = type != list && type != texts && type != table && type != captures &&
                            type != pairs && type != programs && type != variables &&
                            type != menu && type != number;
    result.emplace(key, wants_text ? plist::value(plist::array{1}) : plist::value("x"));
  }
  result.insert_or_assign("uuid", uuid);
  return result;
}

}  // namespace

// Each value of a wrong type is told once, with its file and key, and costs only itself.
TEST_F(bundle_test, wrong_types_are_told_once_with_file_and_key) {
  std::string const bundle = "share/Bundles/Wrong.qnbundle/";
  std::multiset<std::string> expected;
  auto const write = [&](std::string const& file, plist::dictionary const& content) {
    std::filesystem::create_directories(std::filesystem::path(folder / file).parent_path());
    folder.write(file, plist::write_xml(content).text);
  };
  auto const expect = [&](std::string const& file, bundles::key_types const& keys,
                          std::string const& prefix = "") {
    for (auto const& [key, type] : keys)
      if (key != "uuid") expected.insert(folder / file + ": " + prefix + std::string(key));
  };
  auto info = all_wrong(bundles::keys_of_kind(bundles::item_kind::bundle), "B");
  for (char const* key : {"isDelta", "changed"}) info.erase(key);
  write(bundle + "info.plist", info);
  for (auto const& [key, value] : info)
    if (key != "uuid") expected.insert(folder / (bundle + "info.plist") + ": " + key);
  for (bundles::kind_row const& k : bundles::item_kinds) {
    bool const is_folder = k.kind == bundles::item_kind::file_template;
    std::string const file =
        bundle + std::string(k.directory) + "/x.plist" + (is_folder ? "/info.plist" : "");
    auto content = all_wrong(bundles::keys_of_kind(k.kind), std::string(k.name).c_str());
    expect(file, bundles::keys_of_kind(k.kind));
    write(file, content);
  }
  std::string const settings = bundle + "Preferences/y.plist",
                    delta = bundle + "Preferences/z.plist";
  write(settings, {{"uuid", "Y"}, {"settings", all_wrong(bundles::setting_keys(), "-")}});
  expect(settings, bundles::setting_keys(), "settings.");
  put(delta,
      "{ uuid = Z; isDelta = 1; deleted = x; changed = { name = ( ); 'settings.foreground' = "
      "red; settings = { bold = x; }; }; }");
  for (char const* key :
       {"deleted", "changed.name", "changed.settings.foreground", "changed.settings.bold"})
    expected.insert(folder / delta + ": " + key);

  testing::internal::CaptureStderr();
  for (int round = 0; round < 2; ++round) {
    for (auto const& item : manager().bundleItems()) item->content();
    EXPECT_EQ(manager().bundleItems().size(), 8u);
    manager().bundleForUUID("B")->flatMenu();
    manager().reloadBundles();
    restart();
  }
  std::istringstream told(testing::internal::GetCapturedStderr());
  std::multiset<std::string> lines;
  for (std::string line; std::getline(told, line);)
    lines.insert(line.substr(10, line.rfind(": ") - 10));  // without "Quirnote: " and the reason
  EXPECT_EQ(lines, expected);
}
