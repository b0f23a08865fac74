#include "textview/WynThemeManager.h"

#include <algorithm>
#include <cstdio>

#include "bundles/item_file.h"
#include "path/file_system.h"
#include "path/path.h"
#include "platform/library_folders.h"
#include "platform/user_defaults.h"

namespace {

constexpr char const* selected_key = "WynThemeManagerSelectedTheme";
constexpr char const* deleted_key = "WynThemeManagerDeletedThemes";

std::vector<std::string> theme_folders() {
  std::vector<std::string> folders = platform::library_domains();
  folders.push_back(platform::shared_support_folder());
  for (std::string& folder : folders) folder = path::join(folder, "Themes");
  return folders;
}

platform::user_defaults& defaults() {
  return platform::user_defaults::standard();
}

}  // namespace

WynThemeManager& WynThemeManager::sharedInstance() {
  static WynThemeManager instance(theme_folders());
  return instance;
}

WynThemeManager::WynThemeManager(std::vector<std::string> folders) {
  for (std::string const& folder : folders) readThemes(folder);
  std::stable_sort(settingsFiles_.begin(), settingsFiles_.end(),
                   [](theme const& a, theme const& b) { return a.name() < b.name(); });
  if (theme const* const current = selectedTheme()) selected_ = current->uuid();
  defaultsToken_ = platform::notification_center::standard().observe(
      platform::user_defaults::did_change, [this](auto const&) { defaultsDidChange(); });
}

void WynThemeManager::readThemes(std::string const& folder) {
  if (!path::exists(folder)) return;
  plist::array const deleted = defaults().array(deleted_key);
  for (std::string const& name : bundles::visible_names(folder)) {
    if (!name.ends_with("plist") && !name.ends_with("qnTheme")) continue;
    std::string const file = path::join(folder, name);
    plist::value data = bundles::read_dictionary(file);
    if (!data) {
      bundles::complain("error reading file " + file);
      bundles::beep();
      continue;
    }
    if (data["uuid"].string_or("").empty()) {
      plist::dictionary named = data.entries();
      named.insert_or_assign("uuid", bundles::stringWithUUID());
      data = std::move(named);
    }
    std::string const uuid = data["uuid"].string_or("");
    bool const is_known = std::any_of(settingsFiles_.begin(), settingsFiles_.end(),
                                      [&](theme const& other) { return other.uuid() == uuid; });
    bool const is_deleted = std::find(deleted.begin(), deleted.end(), uuid) != deleted.end();
    if (!is_known && !is_deleted) settingsFiles_.push_back({name, file, data, data});
  }
}

WynThemeManager::theme const* WynThemeManager::selectedTheme() {
  std::string const selected = defaults().string(selected_key);
  auto const found = std::find_if(settingsFiles_.begin(), settingsFiles_.end(),
                                  [&](theme const& t) { return t.uuid() == selected; });
  if (found != settingsFiles_.end()) return &*found;
  if (settingsFiles_.size() <= 2) return nullptr;
  defaults().set(selected_key, settingsFiles_[2].uuid());
  return &settingsFiles_[2];
}

plist::value WynThemeManager::currentTheme() {
  theme const* const current = selectedTheme();
  return current == nullptr ? plist::value() : current->data["settings"];
}

void WynThemeManager::selectTheme(std::string const& uuid) {
  defaults().set(selected_key, uuid);
}

void WynThemeManager::defaultsDidChange() {
  theme const* const current = selectedTheme();
  std::string uuid = current == nullptr ? "" : current->uuid();
  if (uuid == selected_) return;
  selected_ = std::move(uuid);
  platform::notification_center::standard().post(did_change, this);
}
