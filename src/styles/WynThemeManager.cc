#include "styles/WynThemeManager.h"

#include <algorithm>
#include <cstdio>

#include "bundles/check/type_check.h"
#include "bundles/files/item_file.h"
#include "path/file_system.h"
#include "path/path.h"
#include "path/tree.h"
#include "platform/desktop.h"
#include "platform/log.h"
#include "platform/system/library_folders.h"
#include "platform/system/uuid.h"
#include "settings/store.h"
#include "styles/color_strings.h"

namespace {

constexpr char const* selected_key = "WynThemeManagerSelectedTheme";
constexpr char const* follows_key = "WynThemeManagerFollowsDesktop";
constexpr char const* light_key = "WynThemeManagerLightTheme";
constexpr char const* dark_key = "WynThemeManagerDarkTheme";
// Themes of ours, for desktops that ask for high contrast.
constexpr char const* contrast_light = "76F594AD-5B3C-588F-A27C-5FB6D60E5638";
constexpr char const* contrast_dark = "D8F5D9EB-24EF-530A-AE78-688D54020B49";
constexpr char const* deleted_key = "WynThemeManagerDeletedThemes";

std::vector<std::string> theme_folders() {
  std::vector<std::string> folders = platform::library_domains();
  folders.push_back(platform::shared_support_folder());
  for (std::string& folder : folders) folder = path::join(folder, "Themes");
  return folders;
}

bool has_dark_background(WynThemeManager::theme const& theme) {
  for (plist::value const& rule : theme.data["settings"].elements())
    if (auto const c = styles::NSColorForKey(rule["settings"], "background"); c && !rule["scope"])
      return styles::is_dark(*c);
  return false;
}

}  // namespace

WynThemeManager& WynThemeManager::sharedInstance() {
  static WynThemeManager instance(theme_folders());
  return instance;
}

WynThemeManager::WynThemeManager(std::vector<std::string> folders)
    : folders_(std::move(folders)), settingsFiles_(themesInFolders()), shown_(currentTheme()) {
  defaultsToken_ = platform::notification_center::standard().observe(
      platform::user_defaults::did_change, [this](auto const&) { tellIfChanged(); });
  appearanceToken_ = platform::notification_center::standard().observe(
      platform::appearance::did_change, [this](auto const&) { tellIfChanged(); });
  fitWindows();
}

void WynThemeManager::reloadThemes() {
  settingsFiles_ = themesInFolders();
  tellIfChanged();
}

std::vector<WynThemeManager::theme> WynThemeManager::themesInFolders() const {
  std::vector<theme> themes;
  for (std::string const& folder : folders_) readThemes(folder, themes);
  std::stable_sort(themes.begin(), themes.end(),
                   [](theme const& a, theme const& b) { return a.name() < b.name(); });
  return themes;
}

void WynThemeManager::readThemes(std::string const& folder, std::vector<theme>& themes) const {
  if (!path::exists(folder)) return;
  plist::array const deleted = settings::store().array(deleted_key);
  for (std::string const& name : path::visible_names(folder)) {
    if (!name.ends_with("plist") && !name.ends_with("qnTheme")) continue;
    std::string const file = path::join(folder, name);
    theme const* const former = themeOfFile(file);
    plist::value data = bundles::read_dictionary(file);
    if (data) {
      bundles::complain_of_theme_types(data, file);
    } else {
      platform::log_once("error reading file " + file);
      platform::beep();
      if (former == nullptr) continue;
      data = former->data;
    }
    if (data["uuid"].string_or("").empty()) {
      plist::dictionary named = data.entries();
      named.insert_or_assign("uuid", former ? former->uuid() : platform::stringWithUUID());
      data = std::move(named);
    }
    std::string const uuid = data["uuid"].string_or("");
    bool const is_known = std::any_of(themes.begin(), themes.end(),
                                      [&](theme const& other) { return other.uuid() == uuid; });
    bool const is_deleted = std::find(deleted.begin(), deleted.end(), uuid) != deleted.end();
    if (!is_known && !is_deleted) themes.push_back({name, file, data, data});
  }
}

WynThemeManager::theme const* WynThemeManager::themeWithUUID(std::string const& uuid) const {
  auto const found = std::find_if(settingsFiles_.begin(), settingsFiles_.end(),
                                  [&](theme const& t) { return t.uuid() == uuid; });
  return found == settingsFiles_.end() ? nullptr : &*found;
}

WynThemeManager::theme const* WynThemeManager::themeOfFile(std::string const& file) const {
  auto const found = std::find_if(settingsFiles_.begin(), settingsFiles_.end(),
                                  [&](theme const& t) { return t.filepath == file; });
  return found == settingsFiles_.end() ? nullptr : &*found;
}

WynThemeManager::theme const* WynThemeManager::selectedTheme() {
  if (followsDesktop()) {
    auto* const desktop = platform::desktop::current_or_null();
    bool const dark = desktop != nullptr && desktop->appearance().is_dark();
    if (desktop != nullptr && desktop->appearance().wants_contrast())
      if (theme const* const found = themeWithUUID(dark ? contrast_dark : contrast_light))
        return found;
    std::string const uuid =
        dark ? settings::store().string(dark_key) : settings::store().string(light_key);
    if (theme const* const found = themeWithUUID(uuid)) return found;
  }
  if (theme const* const found = themeWithUUID(settings::store().string(selected_key)))
    return found;
  return settingsFiles_.size() <= 2 ? nullptr : &settingsFiles_[2];
}

plist::value WynThemeManager::currentTheme() {
  theme const* const current = selectedTheme();
  return current == nullptr ? plist::value() : current->data["settings"];
}

bool WynThemeManager::selectTheme(std::string const& uuid) {
  theme const* const chosen = themeWithUUID(uuid);
  if (chosen == nullptr) return false;
  settings::store().set(has_dark_background(*chosen) ? dark_key : light_key, uuid);
  settings::store().set(selected_key, uuid);
  settings::store().set(follows_key, false);
  return true;
}

bool WynThemeManager::followsDesktop() const {
  return settings::store().boolean(follows_key);
}

void WynThemeManager::setFollowsDesktop(bool follow) {
  if (theme const* const current = selectedTheme(); current != nullptr && !follow)
    settings::store().set(selected_key, current->uuid());
  settings::store().set(follows_key, follow);
}

void WynThemeManager::fitWindows() {
  theme const* const current = selectedTheme();
  if (auto* const desktop = platform::desktop::current_or_null())
    desktop->appearance().fit_windows_to(current != nullptr && has_dark_background(*current));
}

void WynThemeManager::tellIfChanged() {
  plist::value rules = currentTheme();
  if (rules == shown_) return;
  shown_ = std::move(rules);
  fitWindows();
  platform::notification_center::standard().post(did_change, this);
}
