#pragma once

#include <QProxyStyle>

namespace widgets {

/// The desktop's style, with tab triggers in menus, and without the one icon that every menu bar
/// asks for at its birth: it makes Qt load all plugins for icons and images before the first window
/// is shown.
class LeanStyle final : public QProxyStyle {
 public:
  QIcon standardIcon(StandardPixmap icon, QStyleOption const* option,
                     QWidget const* widget) const override {
    if (icon == SP_ToolBarHorizontalExtensionButton) return {};
    return QProxyStyle::standardIcon(icon, option, widget);
  }

  /// What is disabled is dimmed, without the shadow that makes it hard to read on a dark ground.
  int styleHint(StyleHint hint, QStyleOption const* option, QWidget const* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_EtchDisabledText) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }

  /// Boxes have an edge that is seen on a dark ground, too.
  void drawPrimitive(PrimitiveElement element, QStyleOption const* option, QPainter* painter,
                     QWidget const* widget) const override;

  /// What ends with `tab_sign` in the place of a shortcut is a tab trigger, on a ground of its own.
  void drawControl(ControlElement element, QStyleOption const* option, QPainter* painter,
                   QWidget const* widget) const override;
};

inline constexpr QChar tab_sign{0x21E5};
inline constexpr QChar key_divider{0x2003};
/// What stands at the right of an entry that has a key, a trigger or both.
QString key_and_trigger(QString const& key, QString const& trigger);

}  // namespace widgets
