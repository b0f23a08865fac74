#include "desktop/FindPanel.h"

#include "desktop/DialogParent.h"
#include "desktop/KeyTranslation.h"
#include "desktop/QtText.h"
#include "platform/desktop.h"

#include <QCloseEvent>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPushButton>
#include <QShortcut>
#include <QTextCharFormat>
#include <QWindow>

#include <utility>

namespace widgets {
namespace {

using enum platform::find_action;

constexpr int field_width = 380;  // pixels

QComboBox* make_field() {
  auto* const field = new QComboBox;
  field->setEditable(true);
  field->setInsertPolicy(QComboBox::NoInsert);
  field->setCompleter(nullptr);
  field->setMinimumWidth(field_width);
  field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  field->setMinimumContentsLength(20);
  field->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  return field;
}

void fill(QComboBox& field, std::vector<std::string> const& history) {
  QString const text = field.currentText();
  int const cursor = field.lineEdit()->cursorPosition();
  field.clear();
  for (std::string const& entry : history) field.addItem(qstring(entry));
  field.setEditText(text);
  field.lineEdit()->setCursorPosition(cursor);
}

}  // namespace

class FindPanel::Dialog final : public QDialog {
 public:
  explicit Dialog(FindPanel& owner) : owner_(owner) {}

 protected:
  void hideEvent(QHideEvent* event) override {
    QDialog::hideEvent(event);
    if (owner_.delegate_ != nullptr && !event->spontaneous()) owner_.delegate_->findPanelDidClose();
  }

 private:
  FindPanel& owner_;
};

// A button that knows which keys were held when it was clicked. Its own key (Alt and a letter) is
// no click with Alt.
class FindPanel::Button final : public QPushButton {
 public:
  using QPushButton::QPushButton;
  Qt::KeyboardModifiers take_modifiers() { return std::exchange(held_, {}); }

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override {
    held_ = event->modifiers();
    QPushButton::mouseReleaseEvent(event);
    held_ = {};
  }

 private:
  Qt::KeyboardModifiers held_;
};

FindPanel::FindPanel() = default;

FindPanel::~FindPanel() {
  delegate_ = nullptr;
}

void FindPanel::make_dialog() {
  dialog_ = std::make_unique<Dialog>(*this);
  dialog_->setWindowTitle(QStringLiteral("Find"));
  auto* const grid = new QGridLayout(dialog_.get());
  find_ = make_field();
  replace_ = make_field();
  auto* const find_label = new QLabel(QStringLiteral("&Find:"));
  auto* const replace_label = new QLabel(QStringLiteral("Re&place:"));
  find_label->setBuddy(find_);
  replace_label->setBuddy(replace_);
  grid->addWidget(find_label, 0, 0, Qt::AlignRight);
  grid->addWidget(find_, 0, 1);
  grid->addWidget(replace_label, 1, 0, Qt::AlignRight);
  grid->addWidget(replace_, 1, 1);

  regular_expression_ = new QCheckBox(QStringLiteral("Regular e&xpression"));
  ignore_case_ = new QCheckBox(QStringLiteral("&Ignore case"));
  wrap_around_ = new QCheckBox(QStringLiteral("&Wrap around"));
  auto* const boxes = new QHBoxLayout;
  for (QCheckBox* box : {regular_expression_, ignore_case_, wrap_around_}) {
    boxes->addWidget(box);
    QObject::connect(box, &QCheckBox::toggled, dialog_.get(), [this] { changed(); });
  }
  boxes->addStretch();
  grid->addLayout(boxes, 2, 1);
  status_ = new QLabel;
  status_->setTextFormat(Qt::PlainText);
  status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  status_->setWordWrap(true);
  make_buttons(*grid);

  for (QComboBox* field : {find_, replace_})
    QObject::connect(field, &QComboBox::editTextChanged, dialog_.get(), [this] { changed(); });
  for (Qt::Key enter : {Qt::Key_Return, Qt::Key_Enter}) {
    add_key(enter, find_next, false);
    add_key(QKeySequence(Qt::SHIFT | enter), find_previous, false);
    add_key(QKeySequence(Qt::CTRL | enter), find_next, true);
  }
  add_key(Qt::Key_F3, find_next, false);
  add_key(Qt::SHIFT | Qt::Key_F3, find_previous, false);
  set_values(values_);
  set_histories(find_history_, replace_history_);
}

void FindPanel::make_buttons(QGridLayout& grid) {
  struct button {
    char const* title;
    platform::find_action action;
    char const* tip;
  };
  constexpr button buttons[] = {
      {"Replace &All", replace_all, "With Alt or Ctrl held at the click, in the selection only"},
      {"&Replace", replace, "Replace the selection"},
      {"Replace && Fi&nd", replace_and_find, "Replace the selection and find the next match"},
      {"C&ount", count, "With Alt or Ctrl held at the click, in the selection only"},
      {"Pre&vious", find_previous, "Shift+Return"},
      {"Nex&t", find_next, "Return; Ctrl+Return closes this window, too"}};
  auto* const row = new QHBoxLayout;
  for (button const& b : buttons) {
    auto* const made = new Button(QLatin1String(b.title));
    made->setAutoDefault(false);
    made->setToolTip(QLatin1String(b.tip));
    QObject::connect(made, &QPushButton::clicked, dialog_.get(),
                     [=, this, action = b.action] { act(action, made->take_modifiers(), false); });
    row->addWidget(made);
  }
  grid.addWidget(status_, 3, 0, 1, 2);
  grid.addLayout(row, 4, 0, 1, 2);
}

void FindPanel::add_key(QKeySequence const& key, platform::find_action action, bool by_key) {
  auto* const shortcut = new QShortcut(key, dialog_.get());
  QObject::connect(shortcut, &QShortcut::activated, dialog_.get(),
                   [this, action, by_key] { act(action, {}, by_key); });
}

void FindPanel::act(platform::find_action action, Qt::KeyboardModifiers held, bool by_key) {
  platform::desktop::current().waits().deliver([this, action, held, by_key] {
    if (delegate_ != nullptr) delegate_->findPanelAction(action, translate_modifiers(held), by_key);
  });
}

void FindPanel::changed() {
  if (!filling_ && delegate_ != nullptr) delegate_->findPanelDidChange();
}

void FindPanel::order_front(bool replace_field) {
  if (dialog_ == nullptr) make_dialog();
  QWidget* const window = dialog_parent();
  bool const was_visible = dialog_->isVisible();
  dialog_->winId();
  if (window != nullptr && window != dialog_.get() && window->windowHandle() != nullptr)
    dialog_->windowHandle()->setTransientParent(window->windowHandle());
  if (!was_visible && window != nullptr) place_over(window);
  dialog_->show();
  dialog_->raise();
  dialog_->activateWindow();
  QComboBox* const field = replace_field ? replace_ : find_;
  field->setFocus();
  field->lineEdit()->selectAll();
}

// Near the window's upper right corner, where it covers little text.
void FindPanel::place_over(QWidget* window) {
  dialog_->adjustSize();
  QPoint const corner = window->mapToGlobal(QPoint(window->width() - dialog_->width() - 24, 40));
  dialog_->move(std::max(corner.x(), 0), std::max(corner.y(), 0));
}

void FindPanel::close() {
  if (dialog_ != nullptr) dialog_->hide();
}

QWidget* FindPanel::dialog() const {
  return dialog_.get();
}

bool FindPanel::is_visible() const {
  return dialog_ != nullptr && dialog_->isVisible();
}

platform::find_panel_values FindPanel::values() const {
  if (dialog_ == nullptr) return values_;
  return {utf8(find_->currentText()), utf8(replace_->currentText()),
          regular_expression_->isChecked(), ignore_case_->isChecked(), wrap_around_->isChecked()};
}

void FindPanel::set_values(platform::find_panel_values const& v) {
  values_ = v;
  if (dialog_ == nullptr || values() == v) return;
  filling_ = true;
  find_->setEditText(qstring(v.find));
  replace_->setEditText(qstring(v.replace));
  regular_expression_->setChecked(v.regular_expression);
  ignore_case_->setChecked(v.ignore_case);
  wrap_around_->setChecked(v.wrap_around);
  filling_ = false;
}

void FindPanel::set_histories(std::vector<std::string> const& find,
                              std::vector<std::string> const& replace) {
  find_history_ = find;
  replace_history_ = replace;
  if (dialog_ == nullptr) return;
  filling_ = true;
  fill(*find_, find);
  fill(*replace_, replace);
  filling_ = false;
}

void FindPanel::set_status(std::string const& text) {
  if (dialog_ != nullptr) status_->setText(qstring(text));
}

// The field takes formats for parts of its text from input methods only.
void FindPanel::mark_error(std::size_t offset) {
  if (dialog_ == nullptr) return;
  QLineEdit* const field = find_->lineEdit();
  QList<QInputMethodEvent::Attribute> marks;
  if (offset != std::string::npos) {
    QTextCharFormat wrong;
    wrong.setForeground(Qt::white);
    wrong.setBackground(QColor(0xC0, 0x20, 0x20));
    int const start = static_cast<int>(offset) - field->cursorPosition();
    int const length = static_cast<int>(field->text().size()) - static_cast<int>(offset);
    marks.append({QInputMethodEvent::TextFormat, start, length, wrong});
  }
  QInputMethodEvent event(QString(), marks);
  QCoreApplication::sendEvent(field, &event);
}

}  // namespace widgets
