#include "desktop/QtAlertPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QMessageBox>
#include <QPushButton>

#include <vector>

namespace widgets {

std::size_t QtAlertPanel::run(platform::alert const& question) {
  QMessageBox box(dialog_parent());
  box.setIcon(question.critical             ? QMessageBox::Critical
              : question.buttons.size() > 1 ? QMessageBox::Question
                                            : QMessageBox::Information);
  box.setTextFormat(Qt::PlainText);  // texts hold file names, which may look like markup
  box.setWindowTitle(QGuiApplication::applicationDisplayName());
  box.setText(qstring(question.title));
  box.setInformativeText(qstring(question.text));

  std::vector<QAbstractButton*> buttons;
  for (std::string const& title : question.buttons) {
    QString label = qstring(title);
    label.replace(QLatin1Char('&'), QLatin1String("&&"));
    // Without roles the desktop would reorder them; the order given is part of the question.
    buttons.push_back(box.addButton(label, QMessageBox::ActionRole));
  }
  if (buttons.empty()) buttons.push_back(box.addButton(QMessageBox::Ok));
  box.setDefaultButton(static_cast<QPushButton*>(buttons.front()));
  std::size_t const safe = question.safe_button < buttons.size() ? question.safe_button : 0;
  box.setEscapeButton(buttons[safe]);

  box.exec();
  for (std::size_t i = 0; i < buttons.size(); ++i)
    if (box.clickedButton() == buttons[i]) return i;
  return safe;
}

}  // namespace widgets
