#include "desktop/QtPromptPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QInputDialog>

namespace widgets {

std::optional<std::string> QtPromptPanel::ask(std::string const& title, std::string const& text,
                                              std::string const& initial) {
  bool accepted = false;
  QString const answer = QInputDialog::getText(dialog_parent(), qstring(title), qstring(text),
                                               QLineEdit::Normal, qstring(initial), &accepted);
  if (!accepted) return std::nullopt;
  return utf8(answer);
}

}  // namespace widgets
