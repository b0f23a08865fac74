#include "desktop/QtAlertPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QDialog>
#include <QFontDatabase>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <vector>

namespace widgets {
namespace {

QString button_label(std::string const& title) {
  return qstring(title).replace(QLatin1Char('&'), QLatin1String("&&"));
}

std::size_t safe_button(platform::alert const& question) {
  return question.safe_button < question.buttons.size() ? question.safe_button : 0;
}

QLabel* make_label(std::string const& text) {
  auto* const label = new QLabel(qstring(text));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  return label;
}

QPlainTextEdit* make_text(std::string const& details) {
  auto* const text = new QPlainTextEdit(qstring(details));
  text->setReadOnly(true);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  text->setLineWrapMode(QPlainTextEdit::NoWrap);
  return text;
}

// Room for what is usual, on a small screen what there is.
void resize_for_text(QDialog& dialog, QPlainTextEdit const& text) {
  QFontMetrics const metrics(text.font());
  QSize const wanted(metrics.horizontalAdvance(QLatin1Char('0')) * 84, metrics.lineSpacing() * 34);
  dialog.resize(wanted.boundedTo(dialog.screen()->availableSize() * 0.8));
}

std::size_t run_with_details(platform::alert const& question) {
  QDialog dialog(dialog_parent());
  dialog.setWindowTitle(qstring(question.title));
  auto* const column = new QVBoxLayout(&dialog);
  if (!question.text.empty()) column->addWidget(make_label(question.text));
  QPlainTextEdit* const text = make_text(question.details);
  column->addWidget(text);
  auto* const row = new QHBoxLayout;
  row->addStretch();
  for (std::size_t i = 0; i < question.buttons.size(); ++i) {
    auto* const button = new QPushButton(button_label(question.buttons[i]));
    button->setDefault(i == 0);
    QObject::connect(button, &QPushButton::clicked, &dialog,
                     [&dialog, i] { dialog.done(static_cast<int>(i) + 1); });
    row->addWidget(button);
  }
  column->addLayout(row);
  resize_for_text(dialog, *text);
  int const chosen = dialog.exec();
  return chosen == 0 ? safe_button(question) : static_cast<std::size_t>(chosen) - 1;
}

}  // namespace

std::size_t QtAlertPanel::ask(platform::alert const& question) {
  if (!question.details.empty()) return run_with_details(question);
  QMessageBox box(dialog_parent());
  box.setIcon(question.critical             ? QMessageBox::Critical
              : question.buttons.size() > 1 ? QMessageBox::Question
                                            : QMessageBox::Information);
  box.setTextFormat(Qt::PlainText);  // texts hold file names, which may look like markup
  box.setWindowTitle(QGuiApplication::applicationDisplayName());
  box.setText(qstring(question.title));
  box.setInformativeText(qstring(question.text));

  std::vector<QAbstractButton*> buttons;
  // Without roles the desktop would reorder them; the order given is part of the question.
  for (std::string const& title : question.buttons)
    buttons.push_back(box.addButton(button_label(title), QMessageBox::ActionRole));
  if (buttons.empty()) buttons.push_back(box.addButton(QMessageBox::Ok));
  box.setDefaultButton(static_cast<QPushButton*>(buttons.front()));
  std::size_t const safe = safe_button(question);
  box.setEscapeButton(buttons[safe]);

  box.exec();
  for (std::size_t i = 0; i < buttons.size(); ++i)
    if (box.clickedButton() == buttons[i]) return i;
  return safe;
}

}  // namespace widgets
