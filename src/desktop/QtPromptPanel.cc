#include "desktop/QtPromptPanel.h"

#include "desktop/QtText.h"

#include <QApplication>
#include <QInputDialog>

namespace widgets {

std::optional<std::string> QtPromptPanel::run(std::string const& title, std::string const& text,
                                              std::string const& initial) {
  bool accepted = false;
  QString const answer =
      QInputDialog::getText(QApplication::activeWindow(), qstring(title), qstring(text),
                            QLineEdit::Normal, qstring(initial), &accepted);
  if (!accepted) return std::nullopt;
  return utf8(answer);
}

}  // namespace widgets
