#include "desktop/QtCommandPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

namespace widgets {
namespace {

using request_t = platform::command_panel_request;

QComboBox* make_choices(std::vector<request_t::choice> const& choices) {
  auto* const box = new QComboBox;
  for (request_t::choice const& each : choices)
    box->addItem(qstring(each.title), qstring(each.word));
  return box;
}

void select_word(QComboBox& box, std::string const& word) {
  box.setCurrentIndex(std::max(box.findData(qstring(word)), 0));
}

QComboBox* make_command(request_t const& request) {
  auto* const box = new QComboBox;
  box->setEditable(true);
  box->setInsertPolicy(QComboBox::NoInsert);
  box->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  box->setMinimumContentsLength(40);
  box->completer()->setCaseSensitivity(Qt::CaseSensitive);
  for (platform::filter_values const& each : request.history) box->addItem(qstring(each.command));
  box->setEditText(qstring(request.initial.command));
  box->lineEdit()->selectAll();
  return box;
}

}  // namespace

std::optional<platform::filter_values> QtCommandPanel::ask(request_t const& request) {
  QDialog dialog(dialog_parent());
  dialog.setWindowTitle(QStringLiteral("Filter Through Command"));
  auto* const command = make_command(request);
  auto* const input = make_choices(request.inputs);
  auto* const output = make_choices(request.outputs);
  auto* const each_row =
      new QCheckBox(QStringLiteral("Run once for each &row of a column selection"));
  auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QPushButton* const execute = buttons->button(QDialogButtonBox::Ok);
  execute->setText(QStringLiteral("Execute"));
  auto* const form = new QFormLayout(&dialog);
  form->addRow(QStringLiteral("&Command:"), command);
  form->addRow(QStringLiteral("&Input:"), input);
  form->addRow(QStringLiteral("&Output:"), output);
  form->addRow(QString(), each_row);
  form->addRow(buttons);

  auto const show = [&](platform::filter_values const& values) {
    select_word(*input, values.input);
    select_word(*output, values.output);
    each_row->setChecked(values.each_row);
  };
  show(request.initial);
  // An entry of the history comes with what it read and changed.
  QObject::connect(command, &QComboBox::activated, &dialog, [&](int row) {
    if (row >= 0 && static_cast<std::size_t>(row) < request.history.size())
      show(request.history[static_cast<std::size_t>(row)]);
  });
  QObject::connect(command, &QComboBox::editTextChanged, execute, [execute](QString const& text) {
    execute->setEnabled(!text.trimmed().isEmpty());
  });
  execute->setEnabled(!command->currentText().trimmed().isEmpty());
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  command->setFocus();
  if (dialog.exec() != QDialog::Accepted) return std::nullopt;
  return platform::filter_values{utf8(command->currentText()),
                                 utf8(input->currentData().toString()),
                                 utf8(output->currentData().toString()), each_row->isChecked()};
}

}  // namespace widgets
