#include "desktop/QtPicker.h"

#include "desktop/DialogParent.h"
#include "desktop/KeyTranslation.h"
#include "desktop/PickerRows.h"
#include "desktop/QtText.h"
#include "keys/WynKeyEvent.h"

#include <QDialog>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMainWindow>
#include <QMenuBar>
#include <QPainter>
#include <QPointer>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace widgets {
namespace {

constexpr int most_rows = 12;  // in sight
constexpr int width_in_letters = 90;
constexpr int help_lines = 2;
constexpr int filling_interval = 30;  // ms

class PickerDialog final : public QDialog {
 public:
  PickerDialog(platform::picker_request const& request, platform::picker_source& source,
               QWidget* parent);

  std::optional<platform::picked_row> chosen() const { return chosen_; }

  // A dialog selects the text in its first field, and a letter would replace it.
  void setVisible(bool visible) override {
    QDialog::setVisible(visible);
    if (visible) field_->end(false);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void place();
  void rows_changed();
  void select(std::size_t row);
  void watch_filling();
  void take_new_rows();
  void show_note();
  void show_help();
  bool handle_key(QKeyEvent& event);
  bool move_in_rows(int key);
  void show_key(QKeyEvent const& event);
  void choose(QModelIndex const& index, platform::picked_way way);

  platform::picker_source& source_;
  bool const takes_keys_;
  bool has_key_ = false;  // one has been pressed to be looked up
  QLineEdit* const field_ = new QLineEdit(this);
  QListView* const list_ = new QListView(this);
  QLabel* const help_ = new QLabel(this);
  QLabel* const note_ = new QLabel(this);
  PickerModel* const model_ = new PickerModel(source_, this);
  KeyTranslation keys_;
  QTimer* const filling_ = new QTimer(this);
  bool has_moved_ = false;                          // in the rows
  std::optional<platform::picked_way> is_awaited_;  // Return was pressed before there was a row
  std::optional<platform::picked_row> chosen_;
};

platform::picked_way way_of(Qt::KeyboardModifiers modifiers) {
  if (modifiers & Qt::ControlModifier) return platform::picked_way::aside;
  return modifiers & Qt::ShiftModifier ? platform::picked_way::own_window
                                       : platform::picked_way::usual;
}

// Paths have no blanks at which they could be broken.
QString breakable(QString text) {
  return text.replace(QLatin1Char('/'), QString::fromUtf8("/\u200b"));
}

PickerDialog::PickerDialog(platform::picker_request const& request, platform::picker_source& source,
                           QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint),
      source_(source),
      takes_keys_(request.takes_keys) {
  setWindowTitle(qstring(request.title));
  setModal(true);
  field_->setAccessibleName(takes_keys_ ? tr("Key") : tr("Letters of the name"));
  field_->setPlaceholderText(takes_keys_                   ? tr("Key")
                             : request.placeholder.empty() ? tr("Letters of a name")
                                                           : qstring(request.placeholder));
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
    has_moved_ = false;
    is_awaited_.reset();
    source_.set_filter(utf8(text));
    rows_changed();
  });
  connect(filling_, &QTimer::timeout, this, [this] { take_new_rows(); });
  connect(list_, &QListView::clicked, this, [this](QModelIndex const& index) {
    choose(index, way_of(QGuiApplication::keyboardModifiers()));
  });
  connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this,
          [this](QModelIndex const& now) {
            field_->setAccessibleDescription(now.data(Qt::AccessibleTextRole).toString());
            show_help();
          });
  place();
  if (request.initial.empty())
    rows_changed();
  else
    field_->setText(qstring(request.initial));
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
  select(source_.first_row());
  watch_filling();
}

void PickerDialog::select(std::size_t row) {
  model_->reset();
  QModelIndex const now = model_->index(static_cast<int>(row), 0);
  if (now.isValid()) {
    list_->setCurrentIndex(now);
    list_->scrollTo(now, QAbstractItemView::PositionAtCenter);
  }
  show_help();
  show_note();
}

void PickerDialog::watch_filling() {
  if (source_.is_filling() != filling_->isActive())
    filling_->isActive() ? filling_->stop() : filling_->start(filling_interval);
}

void PickerDialog::take_new_rows() {
  auto const chosen = static_cast<std::size_t>(std::max(0, list_->currentIndex().row()));
  auto const now = source_.take_new_rows(chosen);
  if (now) select(has_moved_ ? *now : source_.first_row());
  show_note();
  watch_filling();
  if (is_awaited_ && list_->currentIndex().isValid()) choose(list_->currentIndex(), *is_awaited_);
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
  help_->setText(breakable(text));
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
  bool const is_return = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
  if (is_return && !takes_keys_ && !(event.modifiers() & (Qt::AltModifier | Qt::MetaModifier))) {
    choose(list_->currentIndex(), way_of(event.modifiers()));
    return true;
  }
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
      choose(list_->currentIndex(), platform::picked_way::usual);
      return true;
    default:
      return false;
  }
  has_moved_ = true;
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

void PickerDialog::choose(QModelIndex const& index, platform::picked_way way) {
  if (!index.isValid() && source_.is_filling()) is_awaited_ = way;
  if (!index.isValid() || !model_->row_at(index).enabled) return;
  chosen_ = {static_cast<std::size_t>(index.row()), way};
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

std::optional<platform::picked_row> QtPicker::ask(platform::picker_request const& request,
                                                  platform::picker_source& source) {
  // Its parent may be closed meanwhile, and takes it along.
  QPointer const parent = dialog_parent();
  QPointer const dialog = new PickerDialog(request, source, parent);
  bool const accepted = dialog->exec() == QDialog::Accepted;
  std::optional<platform::picked_row> const row =
      accepted && dialog != nullptr ? dialog->chosen() : std::nullopt;
  delete dialog;
  expect_active(parent);
  return row;
}

}  // namespace widgets
