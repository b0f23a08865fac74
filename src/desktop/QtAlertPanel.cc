#include "desktop/QtAlertPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/MenuBar.h"
#include "desktop/QtText.h"

#include <QApplication>
#include <QDialog>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>

namespace widgets {
namespace {

constexpr int widest_text = 56;   // average characters
constexpr int longest_word = 40;  // characters that stay together

std::size_t safe_button(platform::alert const& question) {
  return question.safe_button < question.buttons.size() ? question.safe_button : 0;
}

QStyle::StandardPixmap icon_of(platform::alert const& question) {
  if (question.critical) return QStyle::SP_MessageBoxCritical;
  switch (question.icon) {
    case platform::alert_icon::information:
      return QStyle::SP_MessageBoxInformation;
    case platform::alert_icon::question:
      return QStyle::SP_MessageBoxQuestion;
    case platform::alert_icon::warning:
      break;
  }
  return QStyle::SP_MessageBoxWarning;
}

// Labels break lines at blanks alone, and names of files may be long without any.
QString breakable(std::string const& text) {
  QString result;
  int together = 0;
  for (QChar const c : qstring(text)) {
    together = c.isSpace() ? 0 : together + 1;
    if (together > longest_word && !c.isLowSurrogate()) {
      result += QChar(0x200B);
      together = 1;
    }
    result += c;
  }
  return result;
}

QLabel* make_label(std::string const& text, bool is_heading) {
  auto* const label = new QLabel(breakable(text));
  label->setTextFormat(Qt::PlainText);  // texts hold file names, which may look like markup
  label->setWordWrap(true);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  QFont font = label->font();
  font.setBold(is_heading);
  if (is_heading) font.setPointSizeF(font.pointSizeF() * 1.1);
  label->setFont(font);
  QFontMetrics const metrics = label->fontMetrics();
  int const most = metrics.averageCharWidth() * widest_text;
  // One that is a little longer than a line isn't left with a single word on the second.
  int const wide =
      metrics.boundingRect(QRect(0, 0, most, 1 << 20), Qt::TextWordWrap, label->text()).width() + 2;
  label->setFixedWidth(std::min(wide, most + 2));
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

QHBoxLayout* make_message(platform::alert const& question, QWidget const& widget) {
  int const size = widget.style()->pixelMetric(QStyle::PM_LargeIconSize);
  auto* const picture = new QLabel;
  picture->setPixmap(widget.style()->standardIcon(icon_of(question)).pixmap(size));
  auto* const texts = new QVBoxLayout;
  texts->setSpacing(8);
  texts->addWidget(make_label(question.title, true));
  if (!question.text.empty()) texts->addWidget(make_label(question.text, false));
  texts->addStretch();
  auto* const row = new QHBoxLayout;
  row->setSpacing(16);
  row->addWidget(picture, 0, Qt::AlignTop);
  row->addLayout(texts, 1);
  return row;
}

// In the order given, which is part of the question, and not in that of the desktop.
QHBoxLayout* make_buttons(platform::alert const& question, QDialog& dialog) {
  std::vector<platform::menu_item> titles;
  for (std::string const& title : question.buttons) titles.emplace_back().title = title;
  if (titles.empty()) titles.emplace_back().title = "OK";
  auto* const row = new QHBoxLayout;
  row->addStretch();
  int number = 0;
  for (QString const& text : texts_with_mnemonics(titles)) {
    auto* const button = new QPushButton(text);
    button->setAutoDefault(true);
    button->setDefault(number == 0);
    if (number == 0) button->setFocus();
    QObject::connect(button, &QPushButton::clicked, &dialog,
                     [&dialog, answer = ++number] { dialog.done(answer); });
    row->addWidget(button);
  }
  return row;
}

}  // namespace

std::size_t QtAlertPanel::ask(platform::alert const& question) {
  QDialog dialog(dialog_parent());
  bool const has_details = !question.details.empty();
  dialog.setWindowTitle(has_details ? qstring(question.title)
                                    : QGuiApplication::applicationDisplayName());
  auto* const column = new QVBoxLayout(&dialog);
  column->setContentsMargins(16, 16, 16, 12);
  column->setSpacing(16);
  if (has_details) {
    if (!question.text.empty()) column->addWidget(make_label(question.text, false));
    QPlainTextEdit* const text = make_text(question.details);
    column->addWidget(text);
    resize_for_text(dialog, *text);
  } else {
    column->addLayout(make_message(question, dialog));
    column->setSizeConstraint(QLayout::SetFixedSize);
  }
  column->addLayout(make_buttons(question, dialog));
  int const chosen = dialog.exec();
  return chosen == 0 ? safe_button(question) : static_cast<std::size_t>(chosen) - 1;
}

}  // namespace widgets
