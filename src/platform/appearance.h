#pragma once

namespace platform {

/// Whether the user likes windows light or dark, and whether they are. Main thread only.
class appearance {
 public:
  /// Posted through notification_center::standard() when it has changed. Not before something has
  /// asked.
  static constexpr char const* did_change = "DesktopAppearanceDidChange";

  virtual ~appearance() = default;

  /// False where the desktop doesn't say.
  virtual bool is_dark() = 0;
  /// The user wants high contrast; likewise.
  virtual bool wants_contrast() { return false; }
  /// The text has a dark ground, or a light one: menus, panels and bars are to fit.
  virtual void fit_windows_to(bool dark) = 0;
};

}  // namespace platform
