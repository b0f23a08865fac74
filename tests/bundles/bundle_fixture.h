#pragma once

#include "bundles/BundleManager.h"
#include "headless/headless_desktop.h"
#include "path/temporary_folder.h"
#include "platform/own_defaults.h"
#include "plist/text_reader.h"
#include "plist/xml_reader.h"
#include "plist/xml_writer.h"
#include "test.h"

/// Search paths in a folder of their own: the user's library, that of a machine, and what ships.
class bundle_test : public testing::Test {
 protected:
  bundle_test() { setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1); }

  bundles::bundle_folders folders() const {
    return {{folder / "data/Quirnote", folder / "machine"}, folder / "share", folder / "index"};
  }
  BundleManager& manager() {
    if (!manager_) manager_ = std::make_unique<BundleManager>(folders());
    return *manager_;
  }
  /// As the next start of the program: what isn't saved is gone.
  BundleManager& restart() {
    if (manager_) manager_->saveCache();
    manager_.reset();
    return manager();
  }

  /// Writes a property list that is given in the text dialect.
  std::string put(std::string const& path, std::string const& text) const {
    plist::dictionary error;
    plist::value const content = plist::convert(text, &error);
    EXPECT_TRUE(content) << text;
    std::filesystem::create_directories(std::filesystem::path(folder / path).parent_path());
    return folder.write(path, plist::write_xml(content).text);
  }
  plist::value get(std::string const& path) const {
    return plist::read_xml(temporary_folder::read(path)).value;
  }
  bool exists(std::string const& path) const { return std::filesystem::exists(folder / path); }
  std::string text_of(std::string const& uuid, std::string const& key) {
    auto const item = manager().bundleItemForUUID(uuid);
    return item ? item->content()[key].string_or("-") : "none";
  }
  std::vector<std::string> alerts() {
    std::vector<std::string> titles;
    for (auto const& alert : desktop.alerts().shown) titles.push_back(alert.title);
    desktop.alerts().shown.clear();
    return titles;
  }

  temporary_folder folder;
  headless::headless_desktop desktop;

 private:
  own_defaults const settings_;
  std::unique_ptr<BundleManager> manager_;
};
