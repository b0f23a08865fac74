#include "desktop/QtFontPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QFontDialog>

namespace widgets {

std::optional<platform::font> QtFontPanel::ask(platform::font const& initial) {
  QFont shown(qstring(initial.family));
  shown.setPointSizeF(initial.point_size);
  bool accepted = false;
  QFont const chosen =
      QFontDialog::getFont(&accepted, shown, dialog_parent(), QStringLiteral("Font"),
                           QFontDialog::MonospacedFonts | QFontDialog::DontUseNativeDialog);
  if (!accepted) return std::nullopt;
  platform::font result = initial;
  result.family = utf8(chosen.family());
  result.point_size = chosen.pointSizeF();
  return result;
}

}  // namespace widgets
