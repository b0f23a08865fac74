#pragma once

namespace platform {

/// Whether the user likes windows light or dark. Main thread only.
class appearance {
 public:
  /// Posted through notification_center::standard() when it has changed. Not before something has
  /// asked.
  static constexpr char const* did_change = "DesktopAppearanceDidChange";

  virtual ~appearance() = default;

  virtual bool is_dark() = 0;
};

}  // namespace platform
