#include "desktop/QtPicker.h"

#include "desktop/DialogParent.h"
#include "desktop/KeyTranslation.h"
#include "desktop/PickerRows.h"
#include "desktop/QtText.h"
#include "keys/WynKeyEvent.h"

#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenuBar>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

namespace widgets {
namespace {

constexpr int most_rows = 12;  // in sight
constexpr int width_in_letters = 90;
constexpr int help_lines = 2;

class PickerDialog final : public QDialog {
 public:
  PickerDialog(platform::picker_request const& request, platform::picker_source& source,
               QWidget* parent);

  std::optional<std::size_t> chosen() const { return chosen_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void place();
  void rows_changed();
  void show_note();
  void show_help();
  bool handle_key(QKeyEvent& event);
  bool move_in_rows(int key);
  void show_key(QKeyEvent const& event);
  void choose(QModelIndex const& index);

  platform::picker_source& source_;
  bool const takes_keys_;
  bool has_key_ = false;  // one has been pressed to be looked up
  QLineEdit* const field_ = new QLineEdit(this);
  QListView* const list_ = new QListView(this);
  QLabel* const help_ = new QLabel(this);
  QLabel* const note_ = new QLabel(this);
  PickerModel* const model_ = new PickerModel(source_, this);
  KeyTranslation keys_;
  std::optional<std::size_t> chosen_;
};

PickerDialog::PickerDialog(platform::picker_request const& request, platform::picker_source& source,
                           QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      source_(source),
      takes_keys_(request.takes_keys) {
  setWindowTitle(qstring(request.title));
  setModal(true);
  field_->setAccessibleName(takes_keys_ ? tr("Key") : tr("Letters of the name"));
  field_->setPlaceholderText(takes_keys_ ? tr("Key") : tr("Letters of a name"));
  field_->installEventFilter(this);
  list_->setAccessibleName(tr("Results"));
  list_->setModel(model_);
  list_->setItemDelegate(new PickerDelegate(*model_, this));
  list_->setUniformItemSizes(true);
  list_->setFocusPolicy(Qt::NoFocus);
  list_->setFrameShape(QFrame::NoFrame);
  list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  list_->setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  help_->setTextFormat(Qt::PlainText);
  help_->setWordWrap(true);
  help_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
  help_->setFixedHeight(help_lines * help_->fontMetrics().lineSpacing());
  help_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  help_->setVisible(request.has_help);
  note_->setTextFormat(Qt::PlainText);
  note_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  auto* const column = new QVBoxLayout(this);
  for (QWidget* const part : {static_cast<QWidget*>(field_), static_cast<QWidget*>(list_),
                              static_cast<QWidget*>(help_), static_cast<QWidget*>(note_)})
    column->addWidget(part);
  int const space = fontMetrics().height() / 3;
  column->setContentsMargins(space, space, space, space);
  column->setSpacing(space);

  connect(field_, &QLineEdit::textChanged, this, [this](QString const& text) {
    if (takes_keys_) return;
    source_.set_filter(utf8(text));
    rows_changed();
  });
  connect(list_, &QListView::clicked, this, [this](QModelIndex const& index) { choose(index); });
  connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](QModelIndex const& now) {
            field_->setAccessibleDescription(now.data(Qt::AccessibleTextRole).toString());
            show_help();
          });
  place();
  rows_changed();
  field_->setFocus();
}

// At the top of the text, as a drop-down list of it would be.
void PickerDialog::place() {
  QStyleOptionViewItem option;
  option.initFrom(list_);
  int const row = list_->itemDelegate()->sizeHint(option, {}).height();
  list_->setFixedHeight(most_rows * row);
  QWidget const* const above = parentWidget();
  QRect room = above != nullptr ? above->frameGeometry() : screen()->availableGeometry();
  int top = room.top();
  if (above != nullptr) {
    room = QRect(above->mapToGlobal(QPoint(0, 0)), above->size());
    auto const* const bar = above->findChild<QMenuBar*>();
    top = room.top() + (bar != nullptr ? bar->height() : 0);
  }
  int const width =
      std::min(width_in_letters * fontMetrics().averageCharWidth(),
               std::max(room.width() - 4 * fontMetrics().height(), 20 * fontMetrics().height()));
  // Never another size: windows that managers resize may be moved, too.
  setFixedSize(width, layout()->sizeHint().height());
  layout()->activate();
  move(room.left() + (room.width() - width) / 2, top);
}

void PickerDialog::rows_changed() {
  model_->reset();
  QModelIndex const first = model_->index(static_cast<int>(source_.first_row()), 0);
  if (first.isValid()) {
    list_->setCurrentIndex(first);
    list_->scrollTo(first, QAbstractItemView::PositionAtCenter);
  }
  show_help();
  show_note();
}

// Cut at the left: of scopes the innermost ones say most.
void PickerDialog::show_note() {
  QString const text = qstring(source_.note());
  note_->setText(note_->fontMetrics().elidedText(text, Qt::ElideLeft, note_->width()));
  note_->setAccessibleName(text);
  note_->setToolTip(text);
}

// What has no room is in the tool tip.
void PickerDialog::show_help() {
  if (help_->isHidden()) return;
  QModelIndex const now = list_->currentIndex();
  QString const text =
      now.isValid() ? qstring(source_.help(static_cast<std::size_t>(now.row()))) : QString();
  help_->setText(text);
  help_->setToolTip(text);
  help_->setAccessibleName(text);
}

bool PickerDialog::eventFilter(QObject* watched, QEvent* event) {
  if (watched == field_ && event->type() == QEvent::KeyPress)
    return handle_key(*static_cast<QKeyEvent*>(event));
  // What an input method composes is no key.
  if (watched == field_ && takes_keys_ && event->type() == QEvent::InputMethod) return true;
  return QDialog::eventFilter(watched, event);
}

bool PickerDialog::handle_key(QKeyEvent& event) {
  if (event.key() == Qt::Key_Escape && event.modifiers() == Qt::NoModifier) {
    reject();
    return true;
  }
  bool const is_plain = !(event.modifiers() & ~Qt::KeypadModifier);
  bool const has_rows = has_key_ && source_.pending_keys().empty();
  if (is_plain && (!takes_keys_ || has_rows) && move_in_rows(event.key())) return true;
  if (takes_keys_) show_key(event);
  return takes_keys_;
}

bool PickerDialog::move_in_rows(int key) {
  int const last = model_->rowCount({}) - 1;
  int const row = list_->currentIndex().row();
  int to = row;
  switch (key) {
    case Qt::Key_Up:
      to = row - 1;
      break;
    case Qt::Key_Down:
      to = row + 1;
      break;
    case Qt::Key_PageUp:
      to = row - (most_rows - 1);
      break;
    case Qt::Key_PageDown:
      to = row + (most_rows - 1);
      break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      choose(list_->currentIndex());
      return true;
    default:
      return false;
  }
  if (last >= 0) list_->setCurrentIndex(model_->index(std::clamp(to, 0, last), 0));
  return true;
}

void PickerDialog::show_key(QKeyEvent const& event) {
  platform::key_event const key = keys_.translate(event);
  std::string const name = WynKeyEvent::keyEventWithEvent(key).stringRepresentation();
  if (key.characters.empty() || name.empty()) return;
  has_key_ = true;
  QStringList keys;
  for (std::string const& each : source_.pending_keys()) keys << key_string_for_display(each);
  keys << key_string_for_display(name);
  field_->setText(keys.join(QLatin1Char(' ')));
  source_.take_key(key);
  rows_changed();
}

void PickerDialog::choose(QModelIndex const& index) {
  if (!index.isValid() || !model_->row_at(index).enabled) return;
  chosen_ = static_cast<std::size_t>(index.row());
  accept();
}

void PickerDialog::paintEvent(QPaintEvent* event) {
  QDialog::paintEvent(event);
  QPainter painter(this);
  // It lies on text of the same background, from which a dark palette's own shades differ too
  // little.
  QColor line = palette().color(QPalette::WindowText);
  line.setAlpha(90);
  painter.setPen(line);
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace

std::optional<std::size_t> QtPicker::ask(platform::picker_request const& request,
                                         platform::picker_source& source) {
  // Its parent may be closed meanwhile, and takes it along.
  QPointer const parent = dialog_parent();
  QPointer const dialog = new PickerDialog(request, source, parent);
  bool const accepted = dialog->exec() == QDialog::Accepted;
  std::optional<std::size_t> const row =
      accepted && dialog != nullptr ? dialog->chosen() : std::nullopt;
  delete dialog;
  expect_active(parent);
  return row;
}

}  // namespace widgets
