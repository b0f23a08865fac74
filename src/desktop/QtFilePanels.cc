#include "desktop/QtFilePanels.h"

#include "desktop/DialogParent.h"
#include "desktop/QtText.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>

namespace widgets {
namespace {

std::string path_bytes(QString const& path) {
  return QFile::encodeName(QDir::cleanPath(path)).toStdString();
}

// The desktop's own dialogs take no further fields, so these are Qt's.
class FileDialog : public QFileDialog {
 public:
  FileDialog(std::string const& title, std::string const& directory)
      : QFileDialog(dialog_parent(), qstring(title)) {
    setOption(QFileDialog::DontUseNativeDialog);
    auto* const hidden = new QCheckBox(QStringLiteral("Show &hidden files"));
    auto const apply = [this] {
      constexpr auto seen = QDir::AllEntries | QDir::AllDirs | QDir::NoDotAndDotDot;
      setFilter(shows_hidden ? seen | QDir::Hidden : seen);
    };
    hidden->setChecked(shows_hidden);
    apply();
    connect(hidden, &QCheckBox::toggled, this, [apply](bool on) {
      shows_hidden = on;
      apply();
    });
    auto* const key = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_H), this);
    connect(key, &QShortcut::activated, hidden, &QCheckBox::toggle);
    further_ = new QHBoxLayout;
    further_->addWidget(hidden);
    further_->addStretch();
    auto* const grid = qobject_cast<QGridLayout*>(layout());
    if (grid != nullptr) grid->addLayout(further_, grid->rowCount(), 0, 1, -1);
    if (!directory.empty()) setDirectory(QFile::decodeName(directory.c_str()));
  }

  /// The row of further widgets, which go to its right end.
  QHBoxLayout& further() { return *further_; }

 private:
  static inline bool shows_hidden = false;  // until the program ends
  QHBoxLayout* further_;
};

QComboBox* add_choices(QBoxLayout& row, QString const& label,
                       std::vector<std::string> const& choices, std::size_t chosen) {
  auto* const box = new QComboBox;
  for (std::string const& choice : choices) box->addItem(qstring(choice));
  if (chosen < choices.size()) box->setCurrentIndex(static_cast<int>(chosen));
  auto* const title = new QLabel(label);
  title->setBuddy(box);
  if (choices.empty()) {
    title->hide();
    box->hide();
  }
  row.addWidget(title);
  row.addWidget(box);
  return box;
}

std::size_t chosen_index(QComboBox const& box) {
  return box.currentIndex() < 0 ? 0 : static_cast<std::size_t>(box.currentIndex());
}

// The folder selected in the dialog, or else the one that it shows.
std::vector<QString> chosen_folders(QFileDialog const& dialog) {
  std::vector<QString> folders;
  for (QString const& path : dialog.selectedFiles())
    if (QFileInfo(path).isDir()) folders.push_back(path);
  if (folders.empty()) folders.push_back(dialog.directory().absolutePath());
  return folders;
}

}  // namespace

std::vector<std::string> QtFilePanels::ask_open(platform::open_request const& request) {
  FileDialog dialog(request.title, request.directory);
  dialog.setFileMode(request.allows_multiple ? QFileDialog::ExistingFiles
                                             : QFileDialog::ExistingFile);
  if (request.only_folders) {
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
  }
  std::vector<QString> chosen;
  if (request.allows_folders && !request.only_folders) {
    // Qt's "Open" enters a folder; taking one as it is needs a button of its own.
    auto* const button = new QPushButton(QStringLiteral("Open &Folder"));
    QObject::connect(button, &QPushButton::clicked, &dialog, [&] {
      chosen = chosen_folders(dialog);
      dialog.QDialog::reject();
    });
    dialog.further().addWidget(button);
  }
  if (dialog.exec() == QDialog::Accepted) {
    QStringList const files = dialog.selectedFiles();
    chosen.assign(files.begin(), files.end());
  }
  std::vector<std::string> paths;
  for (QString const& path : chosen) paths.push_back(path_bytes(path));
  return paths;
}

std::optional<platform::save_answer> QtFilePanels::ask_save(platform::save_request const& request) {
  FileDialog dialog(request.title, request.directory);
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  dialog.selectFile(QFile::decodeName(request.name.c_str()));

  QHBoxLayout& row = dialog.further();
  QComboBox* const encoding =
      add_choices(row, QStringLiteral("&Encoding:"), request.encodings, request.encoding);
  QComboBox* const line_ending =
      add_choices(row, QStringLiteral("&Line endings:"), request.line_endings, request.line_ending);

  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  return platform::save_answer{path_bytes(dialog.selectedFiles().front()), chosen_index(*encoding),
                               chosen_index(*line_ending)};
}

}  // namespace widgets
