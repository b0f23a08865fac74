#pragma once

#include <QProxyStyle>

namespace widgets {

/// The desktop's style, without the one icon that every menu bar asks for at its birth: it makes Qt
/// load all plugins for icons and images before the first window is shown.
class LeanStyle final : public QProxyStyle {
 public:
  QIcon standardIcon(StandardPixmap icon, QStyleOption const* option,
                     QWidget const* widget) const override {
    if (icon == SP_ToolBarHorizontalExtensionButton) return {};
    return QProxyStyle::standardIcon(icon, option, widget);
  }
};

}  // namespace widgets
