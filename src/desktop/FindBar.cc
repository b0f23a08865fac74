#include "desktop/FindBar.h"

#include "desktop/Announcement.h"
#include "desktop/DialogParent.h"
#include "desktop/KeyTranslation.h"
#include "desktop/QtText.h"
#include "desktop/WrongText.h"
#include "platform/desktop.h"
#include "platform/entry_walk.h"

#include <QAction>
#include <QBoxLayout>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>

#include <algorithm>
#include <initializer_list>

namespace widgets {
namespace {

using enum platform::find_action;

constexpr int space = 6;  // pixels

// Of the longer one, so that the fields begin at the same place.
int label_width() {
  return QLabel(QStringLiteral("Re&place:")).sizeHint().width();
}

QIcon arrow_icon(QWidget const& widget) {
  qreal const scale = widget.devicePixelRatioF();
  int const size = widget.fontMetrics().height();
  QPixmap picture(QSize(size, size) * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  QColor color = widget.palette().color(QPalette::Text);
  color.setAlphaF(0.6f);
  painter.setBrush(color);
  qreal const middle = size / 2.0, half = size / 4.0;
  painter.drawPolygon(QPolygonF({{middle - half, middle - half / 2},
                                 {middle + half, middle - half / 2},
                                 {middle, middle + half / 2 + 1}}));
  return QIcon(picture);
}

}  // namespace

// Up and Down walk through what was typed before, and a small arrow shows all of it.
class FindBar::Field final : public QLineEdit {
 public:
  explicit Field(QString const& name) {
    setAccessibleName(name);
    setMinimumWidth(60);
    arrow_ = addAction(arrow_icon(*this), TrailingPosition);
    arrow_->setText(tr("Recent"));
    arrow_->setToolTip(tr("Recent; also Up and Down"));
    connect(arrow_, &QAction::triggered, this, [this] { open_history(); });
  }
  void set_history(std::vector<std::string> const& entries) {
    entries_ = entries;
    walk_.set_entries(entries);
    arrow_->setVisible(!entries.empty());
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    bool const is_plain = !(event->modifiers() & ~Qt::KeypadModifier);
    if (is_plain && event->key() == Qt::Key_Up) return show_entry(walk_.older(utf8(text())));
    if (is_plain && event->key() == Qt::Key_Down) return show_entry(walk_.newer(utf8(text())));
    QLineEdit::keyPressEvent(event);
  }
  void changeEvent(QEvent* event) override {
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && arrow_ != nullptr)
      arrow_->setIcon(arrow_icon(*this));
  }

 private:
  void show_entry(std::string const& entry) {
    if (QString const shown = qstring(entry); shown != text()) setText(shown);
  }
  void open_history() {
    QMenu menu;
    for (std::string const& entry : entries_) {
      QString const whole = qstring(entry);
      QString shown = fontMetrics().elidedText(whole, Qt::ElideRight, width());
      QAction* const item = menu.addAction(shown.replace(QLatin1Char('&'), QLatin1String("&&")));
      connect(item, &QAction::triggered, this, [this, whole] { setText(whole); });
    }
    menu.setMinimumWidth(width());
    menu.exec(mapToGlobal(QPoint(0, -menu.sizeHint().height())));
    setFocus();
  }

  QAction* arrow_ = nullptr;
  std::vector<std::string> entries_;
  platform::entry_walk walk_;
};

// A button that knows which keys were held when it was clicked. Its own key (Alt and a letter) is
// no click with Alt.
class FindBar::Button final : public QPushButton {
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

// Takes what room there is for a text of any length; the tool tip has all of it.
class FindBar::ElidedLabel final : public QLabel {
 public:
  ElidedLabel() { setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed); }
  void set_text(QString const& text) {
    if (text == text_) return;
    text_ = text;
    setToolTip(text);
    setAccessibleName(text);
    update();
  }
  QSize sizeHint() const override { return {100, fontMetrics().height()}; }
  QSize minimumSizeHint() const override { return {0, fontMetrics().height()}; }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    QString shown = text_;
    shown.replace(QLatin1Char('\n'), QChar(0x21B5)).replace(QLatin1Char('\t'), QChar(0x21E5));
    painter.drawText(contentsRect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(shown, Qt::ElideRight, contentsRect().width()));
  }

 private:
  QString text_;
};

// Two groups of widgets beside each other or, where the window is too narrow for that, the second
// one below the first.
class FindBar::Row final : public QWidget {
 public:
  using widgets = std::initializer_list<QWidget*>;
  Row(widgets first, widgets second, int space_within)
      : first_(group(first, space_within)), second_(group(second, space_within)) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    box_->setContentsMargins({});
    box_->setSpacing(space);
    box_->addWidget(first_, 1);
    box_->addWidget(second_);
  }
  QWidget& second() const { return *second_; }
  void let_second_grow() {
    box_->setStretchFactor(first_, 0);
    box_->setStretchFactor(second_, 1);
  }

 protected:
  void resizeEvent(QResizeEvent* event) override {
    QWidget::resizeEvent(event);
    int const needed = first_->sizeHint().width() + space +
                       std::max(second_->minimumWidth(), second_->minimumSizeHint().width());
    box_->setDirection(width() < needed ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  }

 private:
  static QWidget* group(widgets parts, int space_within) {
    auto* const result = new QWidget;
    auto* const row = new QHBoxLayout(result);
    row->setContentsMargins({});
    row->setSpacing(space_within);
    for (QWidget* const part : parts) row->addWidget(part);
    return result;
  }

  QWidget* const first_;
  QWidget* const second_;
  QBoxLayout* const box_ = new QBoxLayout(QBoxLayout::LeftToRight, this);
};

class FindBar::Bar final : public QWidget {
 public:
  explicit Bar(FindBar& owner) : owner_(owner) {
    setAccessibleName(tr("Find"));
    // A window may be narrower than all that the bar could show.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  }
  void watch_keys() {
    for (QWidget* const child : findChildren<QWidget*>())
      if (child->focusPolicy() != Qt::NoFocus) child->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == window()) {
      if (event->type() == QEvent::Hide && !event->spontaneous()) owner_.leave_window();
      return false;
    }
    if (event->type() == QEvent::ShortcutOverride &&
        owner_.has_mnemonic(*static_cast<QKeyEvent*>(event))) {
      event->accept();
      return true;
    }
    if (event->type() == QEvent::KeyPress)
      return owner_.handle_key(static_cast<QWidget*>(watched), *static_cast<QKeyEvent*>(event));
    return QWidget::eventFilter(watched, event);
  }
  // What no part of the bar knows is perhaps the key of a menu; it is never text.
  void keyPressEvent(QKeyEvent* event) override {
    if (FindBarPlace* const place = owner_.place()) place->perform_menu_key(*event);
  }
  // The keys stay in the bar until it closes.
  bool focusNextPrevChild(bool next) override {
    QWidget* const from = focusWidget();
    QWidget* to = from;
    while (to != nullptr) {
      to = next ? to->nextInFocusChain() : to->previousInFocusChain();
      if (to == from) break;
      if (isAncestorOf(to) && (to->focusPolicy() & Qt::TabFocus) && to->isVisible()) {
        to->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
        break;
      }
    }
    return true;
  }
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    QColor line = palette().color(QPalette::WindowText);
    line.setAlpha(60);
    painter.fillRect(0, 0, width(), 1, line);
  }

 private:
  FindBar& owner_;
};

FindBar::~FindBar() {
  delegate_ = nullptr;
  delete bar_;
}

void FindBar::make_bar() {
  bar_ = new Bar(*this);
  mnemonics_.clear();
  find_ = new Field(QStringLiteral("Find"));
  replace_ = new Field(QStringLiteral("Replace"));
  preview_ = new ElidedLabel;
  preview_->setContentsMargins(label_width() + space, 0, 0, 0);  // below the fields
  Row* const find_row = make_find_row();
  Row* const replace_row = make_replace_row();
  replace_row_ = replace_row;
  // The fields stand one above the other, and so do the buttons beside them.
  int const wide = std::max(find_row->second().minimumSizeHint().width(),
                            replace_row->second().minimumSizeHint().width());
  for (Row const* const row : {find_row, replace_row}) row->second().setMinimumWidth(wide);
  auto* const column = new QVBoxLayout(bar_);
  column->setContentsMargins(space, space, space, space);
  column->setSpacing(space);
  for (QWidget* const row :
       {static_cast<QWidget*>(find_row), replace_row_, static_cast<QWidget*>(preview_),
        static_cast<QWidget*>(make_options_row())})
    column->addWidget(row);
  for (Field* const field : {find_, replace_})
    QObject::connect(field, &QLineEdit::textChanged, bar_.data(), [this] { changed(); });
  QWidget::setTabOrder(find_, replace_);
  bar_->watch_keys();
  show_replacing(replaces_);
  set_values(std::exchange(values_, {}));
  set_histories(find_history_, replace_history_);
}

// A label that is its field's buddy takes the mnemonic for the whole window.
QLabel* FindBar::make_label(char const* title, QLineEdit* field) {
  auto* const label = new QLabel(QLatin1String(title));
  label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  label->setMinimumWidth(label_width());
  label->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
  label->setBuddy(field);
  add_mnemonic(label->text(), field);
  return label;
}

FindBar::Row* FindBar::make_find_row() {
  count_ = new QLabel;
  count_->setTextFormat(Qt::PlainText);
  count_->setMinimumWidth(
      count_->fontMetrics().horizontalAdvance(QStringLiteral("88,888 of 88,888")));
  count_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  auto* const close_button = new QToolButton;
  close_button->setText(QStringLiteral("\u2715"));
  close_button->setAutoRaise(true);
  close_button->setFocusPolicy(Qt::NoFocus);
  close_button->setAccessibleName(QStringLiteral("Close"));
  close_button->setToolTip(QStringLiteral("Close (Escape)"));
  QObject::connect(close_button, &QToolButton::clicked, bar_.data(), [this] { close(); });
  QWidget* const previous = make_button("Pre&vious", find_previous, "Shift+Return");
  QWidget* const next = make_button("Nex&t", find_next, "Return; Ctrl+Return closes the bar, too");
  return new Row({make_label("&Find:", find_), find_}, {count_, previous, next, close_button},
                 space);
}

FindBar::Row* FindBar::make_replace_row() {
  QWidget* const one = make_button("&Replace", replace, "Replace the selected match");
  QWidget* const further = make_button("Replace && Fi&nd", replace_and_find,
                                       "Return in the field: replace the selected match and find "
                                       "the next one");
  QWidget* const all = make_button("Replace &All", replace_all,
                                   "With Alt or Ctrl held at the click, in what you have selected");
  for (QWidget* const button : {one, further, all})
    button->setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
  return new Row({make_label("Re&place:", replace_), replace_}, {one, further, all}, space);
}

FindBar::Row* FindBar::make_options_row() {
  regular_expression_ = make_option("Rege&x", "Regular expression");
  ignore_case_ = make_option("&Ignore case", "Capital and small letters are the same");
  whole_words_ = make_option("W&hole words", "What no letter, digit or underscore continues");
  in_selection_ = make_option("In &selection", "Search only in what you have selected");
  wrap_around_ = make_option("&Wrap", "Continue at the other end of the text");
  status_ = new ElidedLabel;
  QWidget* const counting =
      make_button("C&ount", count,
                  "Count all matches, however long that takes. With Alt or Ctrl held at the click, "
                  "in what you have selected");
  auto* const row = new Row({regular_expression_, ignore_case_, whole_words_},
                            {in_selection_, wrap_around_, status_, counting}, 2 * space);
  row->let_second_grow();
  return row;
}

QCheckBox* FindBar::make_option(char const* title, char const* tip) {
  auto* const box = new QCheckBox(QLatin1String(title));
  box->setToolTip(QLatin1String(tip));
  add_mnemonic(box->text(), box);
  QObject::connect(box, &QCheckBox::toggled, bar_.data(), [this] {
    show_replacing(replaces_);
    changed();
  });
  return box;
}

QAbstractButton* FindBar::make_button(char const* title, platform::find_action action,
                                      char const* tip) {
  auto* const button = new Button(QLatin1String(title));
  button->setToolTip(QLatin1String(tip));
  add_mnemonic(button->text(), button);
  QObject::connect(button, &QPushButton::clicked, bar_.data(),
                   [=, this] { act(action, button->take_modifiers()); });
  return button;
}

void FindBar::add_mnemonic(QString const& text, QWidget* widget) {
  for (qsizetype at = 0; at + 1 < text.size(); ++at) {
    if (text[at] != QLatin1Char('&')) continue;
    if (text[++at] != QLatin1Char('&')) mnemonics_.emplace_back(text[at].toLower(), widget);
  }
}

bool FindBar::has_mnemonic(QKeyEvent const& event) const {
  if ((event.modifiers() & ~Qt::KeypadModifier) != Qt::AltModifier || bar_ == nullptr ||
      bar_->focusWidget() == nullptr || !bar_->focusWidget()->hasFocus())
    return false;
  return std::any_of(mnemonics_.begin(), mnemonics_.end(), [&](auto const& known) {
    return event.key() == known.first.toUpper().unicode() && known.second->isVisible();
  });
}

bool FindBar::perform_mnemonic(QKeyEvent const& event) {
  for (auto const& [letter, widget] : mnemonics_) {
    if (event.key() != letter.toUpper().unicode() || !widget->isVisible()) continue;
    if (auto* const button = qobject_cast<QAbstractButton*>(widget)) {
      button->click();
    } else {
      widget->setFocus(Qt::ShortcutFocusReason);
      static_cast<Field*>(widget)->selectAll();
    }
    return true;
  }
  return false;
}

bool FindBar::handle_key(QWidget* at, QKeyEvent const& event) {
  Qt::KeyboardModifiers const held = event.modifiers() & ~Qt::KeypadModifier;
  switch (event.key()) {
    case Qt::Key_Escape:
      if (held == Qt::NoModifier) close();
      return held == Qt::NoModifier;
    case Qt::Key_F3:
      if (held & ~Qt::ShiftModifier) return false;
      act(held == Qt::ShiftModifier ? find_previous : find_next);
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      if (auto* const button = qobject_cast<QPushButton*>(at); button != nullptr && !held)
        button->click();
      else if (held == Qt::ControlModifier)
        act(find_next, {}, true);
      else if (held == Qt::ShiftModifier)
        act(find_previous);
      else if (!held)
        act(at == replace_ ? replace_and_find : find_next);
      return true;
    default:
      return has_mnemonic(event) && perform_mnemonic(event);
  }
}

void FindBar::act(platform::find_action action, Qt::KeyboardModifiers held, bool by_key) {
  platform::desktop::current().waits().deliver([this, action, held, by_key] {
    if (delegate_ != nullptr) delegate_->findPanelAction(action, translate_modifiers(held), by_key);
  });
}

void FindBar::changed() {
  if (filling_) return;
  platform::desktop::current().waits().deliver([this] {
    if (delegate_ != nullptr && is_visible()) delegate_->findPanelDidChange();
  });
}

void FindBar::show_replacing(bool replaces) {
  replaces_ = replaces;
  replace_row_->setVisible(replaces);
  preview_->setVisible(replaces && regular_expression_->isChecked());
}

FindBarPlace* FindBar::place() const {
  return bar_ == nullptr ? nullptr : dynamic_cast<FindBarPlace*>(bar_->window());
}

void FindBar::order_front(bool replace_field) {
  auto* next = dynamic_cast<FindBarPlace*>(dialog_parent());
  if (next == nullptr) next = place();
  if (next == nullptr) return platform::desktop::current().beep();
  if (bar_ == nullptr) make_bar();
  if (next != place()) {
    bar_->window()->removeEventFilter(bar_);
    next->take_find_bar(bar_);
    bar_->window()->installEventFilter(bar_);
  }
  show_replacing(replace_field);
  bar_->show();
  Field* const field = replace_field ? replace_ : find_;
  // With another reason the field selects before it tells that it has the focus, and a screen
  // reader takes the first for the second.
  field->setFocus(Qt::OtherFocusReason);
  field->selectAll();
}

void FindBar::close() {
  if (!is_visible()) return;
  if (FindBarPlace* const window = place()) window->focus_text();
  bar_->hide();
  if (delegate_ != nullptr) delegate_->findPanelDidClose();
}

// The window closes, while all that it shows is still there, and shall not take the bar along.
void FindBar::leave_window() {
  bar_->window()->removeEventFilter(bar_);
  close();
  bar_->hide();
  bar_->setParent(nullptr);
}

bool FindBar::is_visible() const {
  return bar_ != nullptr && bar_->parentWidget() != nullptr && !bar_->isHidden();
}

platform::find_panel_values FindBar::values() const {
  if (bar_ == nullptr) return values_;
  return {.find = utf8(find_->text()),
          .replace = utf8(replace_->text()),
          .regular_expression = regular_expression_->isChecked(),
          .ignore_case = ignore_case_->isChecked(),
          .wrap_around = wrap_around_->isChecked(),
          .whole_words = whole_words_->isChecked(),
          .in_selection = in_selection_->isChecked()};
}

void FindBar::set_values(platform::find_panel_values const& v) {
  if (bar_ == nullptr) values_ = v;
  if (bar_ == nullptr || values() == v) return;
  filling_ = true;
  auto const fill = [](Field& field, std::string const& text) {
    if (utf8(field.text()) != text) field.setText(qstring(text));
  };
  fill(*find_, v.find);
  fill(*replace_, v.replace);
  regular_expression_->setChecked(v.regular_expression);
  ignore_case_->setChecked(v.ignore_case);
  wrap_around_->setChecked(v.wrap_around);
  whole_words_->setChecked(v.whole_words);
  in_selection_->setChecked(v.in_selection);
  filling_ = false;
}

void FindBar::set_histories(std::vector<std::string> const& find,
                            std::vector<std::string> const& replace) {
  find_history_ = find;
  replace_history_ = replace;
  if (bar_ == nullptr) return;
  find_->set_history(find);
  replace_->set_history(replace);
}

void FindBar::set_status(std::string const& text) {
  if (bar_ == nullptr) return;
  status_->set_text(qstring(text));
  announce(*bar_, qstring(text));
}

void FindBar::set_count(std::string const& text) {
  if (bar_ == nullptr || count_->text() == qstring(text)) return;
  count_->setText(qstring(text));
  announce(*bar_, count_->text());
}

void FindBar::set_preview(std::string const& text) {
  if (bar_ != nullptr) preview_->set_text(qstring(text));
}

void FindBar::mark_error(std::size_t offset) {
  if (bar_ != nullptr) mark_wrong_text(*find_, offset);
}

}  // namespace widgets
