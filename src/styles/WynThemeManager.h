#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/notification_center.h"
#include "plist/value.h"

/// The themes that there are, and the one in use. A theme is a property list of `name`, `uuid` and
/// `settings`, an array of rules (textview/scope_style.h). Files are read at the first use, from
/// the Themes folders of the libraries, the user's first, and of the program. Main thread only.
///
/// Posts WynThemeDidChangeNotification when another theme is in use, or the one in use has other
/// rules. User defaults:
/// WynThemeManagerSelectedTheme, a uuid, and WynThemeManagerDeletedThemes, an array of uuids that
/// are left out. While WynThemeManagerFollowsDesktop is true, the one in use is that of
/// WynThemeManagerLightTheme or WynThemeManagerDarkTheme, as the desktop is light or dark. The
/// windows are told whether the theme in use is dark.
class WynThemeManager {
 public:
  static constexpr char const* did_change = "WynThemeDidChangeNotification";

  struct theme {
    std::string filename, filepath;
    plist::value data;    ///< as it is
    plist::value onDisk;  ///< as it is in the file
    std::string name() const { return data["name"].string_or(""); }
    std::string uuid() const { return data["uuid"].string_or(""); }
  };

  static WynThemeManager& sharedInstance();
  /// Reads the themes of these folders; what stands in an earlier one goes first.
  explicit WynThemeManager(std::vector<std::string> folders);

  std::vector<std::string> const& folders() const { return folders_; }
  /// Reads the folders again. A file that can't be read any more leaves what was read of it.
  void reloadThemes();

  /// By name. Good until the themes are read again, as is any pointer into it.
  std::vector<theme> const& allThemes() const { return settingsFiles_; }
  /// The one in use. Where the user has selected none, and the desktop isn't followed, it is the
  /// third if there are at least three. Else null.
  theme const* selectedTheme();
  /// Its rules; nothing without a theme.
  plist::value currentTheme();
  /// Uses that theme, and from then on also for light or for dark desktops, whichever it fits. The
  /// desktop isn't followed any more. False if there is no such theme.
  bool selectTheme(std::string const& uuid);
  bool followsDesktop() const;
  /// Without following, the theme in use stays.
  void setFollowsDesktop(bool follow);

 private:
  std::vector<theme> themesInFolders() const;
  void readThemes(std::string const& folder, std::vector<theme>& themes) const;
  theme const* themeWithUUID(std::string const& uuid) const;
  theme const* themeOfFile(std::string const& file) const;
  void tellIfChanged();
  void fitWindows();

  std::vector<std::string> folders_;
  std::vector<theme> settingsFiles_;
  plist::value shown_;  // the rules in use, as last published
  platform::notification_center::token defaultsToken_, appearanceToken_;
};
