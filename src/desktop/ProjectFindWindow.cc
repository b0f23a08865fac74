#include "desktop/ProjectFindWindow.h"

#include "desktop/QtText.h"
#include "desktop/WrongText.h"
#include "platform/desktop.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QTextLayout>
#include <QTreeView>

#include <algorithm>
#include <array>
#include <utility>

namespace widgets {
namespace {

using platform::project_find_delegate;
using platform::project_find_place;
using platform::project_find_row;

constexpr int space = 6;                  // pixels
constexpr QSize first_size(760, 560);     // pixels
constexpr int most_before = 60;           // units before a match, so that it is in sight
constexpr std::size_t most_opened = 200;  // files whose matches are shown without being asked for

// Ready choices of scopes: what they are called, and their selectors.
constexpr std::array<std::pair<char const*, char const*>, 6> scope_choices = {{
    {"Anywhere", ""},
    {"In comments", "comment"},
    {"Outside comments", "source - comment"},
    {"In strings", "string"},
    {"Outside strings", "source - string"},
    {"In code: outside comments and strings", "source - comment - string"},
}};

// Alt and its letter change it at once. The toolkit's own change comes with a delay, and Return
// would search without it.
class OptionBox final : public QCheckBox {
 public:
  using QCheckBox::QCheckBox;

 protected:
  bool event(QEvent* event) override {
    if (event->type() != QEvent::Shortcut) return QCheckBox::event(event);
    return click(), true;
  }
};

}  // namespace

// Asks the delegate for what comes in sight. Matches have the number of their file, from 1, as
// their id; files have 0.
class ProjectFindWindow::Rows final : public QAbstractItemModel {
 public:
  explicit Rows(ProjectFindWindow& owner, QObject* parent)
      : QAbstractItemModel(parent), owner_(owner) {}

  static project_find_place place(QModelIndex const& index) {
    auto const row = static_cast<std::size_t>(index.row());
    if (index.internalId() == 0) return {.file = row, .match = {}};
    return {.file = static_cast<std::size_t>(index.internalId()) - 1, .match = row};
  }
  QModelIndex index_of(project_find_place at) const {
    QModelIndex const file = index(static_cast<int>(at.file), 0, {});
    return at.match ? index(static_cast<int>(*at.match), 0, file) : file;
  }
  void reset() {
    beginResetModel();
    files_ = count();
    endResetModel();
  }
  void grow() {
    if (count() <= files_) return;
    beginInsertRows({}, static_cast<int>(files_), static_cast<int>(count()) - 1);
    files_ = count();
    endInsertRows();
  }

  QModelIndex index(int row, int column, QModelIndex const& parent) const override {
    if (!hasIndex(row, column, parent)) return {};
    auto const id = parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : 0;
    return createIndex(row, column, id);
  }
  QModelIndex parent(QModelIndex const& child) const override {
    if (!child.isValid() || child.internalId() == 0) return {};
    return createIndex(static_cast<int>(child.internalId()) - 1, 0, quintptr{0});
  }
  int rowCount(QModelIndex const& parent) const override {
    if (!parent.isValid()) return static_cast<int>(files_);
    if (parent.internalId() != 0 || owner_.delegate_ == nullptr) return 0;
    return static_cast<int>(
        owner_.delegate_->projectFindMatches(static_cast<std::size_t>(parent.row())));
  }
  int columnCount(QModelIndex const&) const override { return 1; }
  Qt::ItemFlags flags(QModelIndex const& index) const override {
    if (!index.isValid() || owner_.delegate_ == nullptr) return Qt::NoItemFlags;
    Qt::ItemFlags result = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (has_box(index)) result |= Qt::ItemIsUserCheckable;
    return result;
  }
  QVariant data(QModelIndex const& index, int role) const override {
    if (!index.isValid() || owner_.delegate_ == nullptr) return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
      return qstring(owner_.delegate_->projectFindRow(place(index)).text);
    if (role != Qt::CheckStateRole || !has_box(index)) return {};
    using ticks = project_find_delegate::ticks;
    ticks const ticked = owner_.delegate_->projectFindTicks(place(index));
    return ticked == ticks::all    ? Qt::Checked
           : ticked == ticks::none ? Qt::Unchecked
                                   : Qt::PartiallyChecked;
  }
  bool setData(QModelIndex const& index, QVariant const& value, int role) override {
    if (role != Qt::CheckStateRole || owner_.delegate_ == nullptr) return false;
    owner_.delegate_->projectFindTick(place(index), value.toInt() == Qt::Checked);
    QModelIndex const file = index.internalId() == 0 ? index : parent(index);
    emit dataChanged(file, file);
    if (int const matches = rowCount(file); matches != 0)
      emit dataChanged(this->index(0, 0, file), this->index(matches - 1, 0, file));
    return true;
  }

 private:
  std::size_t count() const {
    return owner_.delegate_ == nullptr ? 0 : owner_.delegate_->projectFindFiles();
  }
  bool has_box(QModelIndex const& index) const {
    return index.internalId() != 0 || rowCount(index) != 0;
  }

  ProjectFindWindow& owner_;
  std::size_t files_ = 0;
};

// What is found is bold, or struck out before what would stand there instead.
class ProjectFindWindow::RowPainter final : public QStyledItemDelegate {
 public:
  RowPainter(ProjectFindWindow& owner, QObject* parent)
      : QStyledItemDelegate(parent), owner_(owner) {}

  void paint(QPainter* painter, QStyleOptionViewItem const& given,
             QModelIndex const& index) const override {
    QStyleOptionViewItem option = given;
    initStyleOption(&option, index);
    option.text.clear();
    QStyle const* const style = option.widget->style();
    style->drawControl(QStyle::CE_ItemViewItem, &option, painter, option.widget);
    if (owner_.delegate_ == nullptr) return;
    project_find_row const row = owner_.delegate_->projectFindRow(Rows::place(index));
    QRect area = option.rect;
    if (option.features & QStyleOptionViewItem::HasCheckIndicator)
      area.setLeft(
          style->subElementRect(QStyle::SE_ItemViewItemCheckIndicator, &option, option.widget)
              .right() +
          space);
    bool const is_selected = option.state & QStyle::State_Selected;
    QColor const color =
        option.palette.color(is_selected ? QPalette::HighlightedText : QPalette::Text);
    paint_row(*painter, area, option.font, color, is_selected, row);
  }

 private:
  static void paint_row(QPainter& painter, QRect const& area, QFont const& font,
                        QColor const& color, bool is_selected, project_find_row const& row) {
    QString text = qstring(row.text);
    for (QChar& c : text)
      if (c < QChar(0x20)) c = QLatin1Char(' ');
    int first = static_cast<int>(row.first), last = static_cast<int>(row.last);
    constexpr int number = 6;  // the number of the line and a colon stay
    if (first - number > most_before) {
      int const cut = first - number - most_before;
      text.replace(number, cut, QChar(0x2026));
      first -= cut - 1;
      last -= cut - 1;
    }
    QList<QTextLayout::FormatRange> formats;
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    if (row.replacement) {
      QString put = qstring(*row.replacement);
      put.replace(QLatin1Char('\n'), QChar(0x21B5)).replace(QLatin1Char('\t'), QLatin1Char(' '));
      text.insert(last, put);
      QTextCharFormat inserted = bold;
      bool const is_dark = color.lightness() > 128;
      if (!is_selected)
        inserted.setForeground(is_dark ? QColor(0x7E, 0xD0, 0x7E) : QColor(0x10, 0x70, 0x10));
      formats.append({last, static_cast<int>(put.size()), inserted});
      bold.setFontStrikeOut(true);
    }
    if (last > first) formats.append({first, last - first, bold});
    QTextLayout layout(text, font);
    layout.setFormats(formats);
    layout.setCacheEnabled(false);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setNumColumns(static_cast<int>(text.size()));
    layout.endLayout();
    painter.save();
    painter.setClipRect(area);
    painter.setPen(color);
    layout.draw(&painter, QPointF(area.left(), area.top() + (area.height() - line.height()) / 2));
    painter.restore();
  }

  ProjectFindWindow& owner_;
};

class ProjectFindWindow::Window final : public QWidget {
 public:
  explicit Window(ProjectFindWindow& owner) : QWidget(nullptr, Qt::Window), owner_(owner) {
    setWindowTitle(QStringLiteral("Find in Project"));
    resize(first_size);
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    bool const is_return = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape && owner_.stop_->isEnabled())
      return owner_.act(platform::project_find_action::stop);
    if (event->key() == Qt::Key_Escape) return owner_.close();
    if (is_return && owner_.tree_->hasFocus()) return owner_.show_row();
    if (is_return) return owner_.act(platform::project_find_action::begin);
    if (event->key() == Qt::Key_F && event->modifiers() & Qt::ControlModifier) {
      owner_.find_->setFocus();
      return owner_.find_->lineEdit()->selectAll();
    }
    QWidget::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    QWidget::closeEvent(event);
    owner_.did_close();
  }

 private:
  ProjectFindWindow& owner_;
};

ProjectFindWindow::~ProjectFindWindow() {
  delegate_ = nullptr;
  delete window_;
}

void ProjectFindWindow::set_delegate(platform::project_find_delegate* delegate) {
  if (delegate == delegate_) return;
  delegate_ = delegate;
  if (window_ == nullptr) return;
  rows_->reset();
  if (delegate == nullptr) window_->hide();
}

QCheckBox* ProjectFindWindow::make_option(char const* title, char const* tip) {
  auto* const box = new OptionBox(QString::fromUtf8(title));
  box->setToolTip(QString::fromUtf8(tip));
  QObject::connect(box, &QCheckBox::toggled, window_.data(), [this] { changed(); });
  return box;
}

QPushButton* ProjectFindWindow::make_button(char const* title, platform::project_find_action action,
                                            char const* tip) {
  auto* const button = new QPushButton(QString::fromUtf8(title));
  button->setToolTip(QString::fromUtf8(tip));
  QObject::connect(button, &QPushButton::clicked, window_.data(), [this, action] { act(action); });
  return button;
}

QWidget* ProjectFindWindow::make_fields() {
  auto* const fields = new QWidget;
  auto* const grid = new QGridLayout(fields);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setSpacing(space);
  auto const add = [&](int row, int column, char const* title, QWidget* field, int span = 1) {
    auto* const label = new QLabel(QString::fromUtf8(title));
    label->setBuddy(field);
    grid->addWidget(label, row, column, Qt::AlignRight);
    grid->addWidget(field, row, column + 1, 1, span);
  };
  auto const combo = [this](char const* name) {
    auto* const field = new QComboBox;
    field->setEditable(true);
    field->setInsertPolicy(QComboBox::NoInsert);
    field->setCompleter(nullptr);
    field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    field->setMinimumContentsLength(8);
    field->setAccessibleName(QString::fromUtf8(name));
    QObject::connect(field, &QComboBox::editTextChanged, window_.data(), [this] { changed(); });
    return field;
  };
  find_ = combo("Find");
  replace_ = combo("Replace");
  scope_ = combo("Scope");
  for (auto const& [title, selector] : scope_choices)
    scope_->addItem(QString::fromUtf8(title), QString::fromUtf8(selector));
  // The field holds the selector, the list says what it is for.
  QObject::connect(scope_, &QComboBox::activated, window_.data(),
                   [this](int row) { scope_->setEditText(scope_->itemData(row).toString()); });
  scope_->setEditText(QString());
  scope_->lineEdit()->setPlaceholderText(QStringLiteral("anywhere, or a scope selector"));
  where_ = new QComboBox;
  where_->setMinimumContentsLength(8);
  where_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  QObject::connect(where_, &QComboBox::activated, window_.data(), [this] { changed(); });
  included_ = new QLineEdit;
  included_->setPlaceholderText(QStringLiteral("all, or globs such as *.cc *.h"));
  excluded_ = new QLineEdit;
  excluded_->setPlaceholderText(QStringLiteral("globs such as build *.min.js"));
  find_button_ = make_button("Fin&d", platform::project_find_action::begin, "Return");
  stop_ = make_button("&Stop", platform::project_find_action::stop, "Escape");
  pattern_ = make_option("&Regular expression", "A pattern; the replacement may have $1");
  ignore_case_ = make_option("&Ignore case", "Small and capital letters are the same");
  whole_words_ = make_option("W&hole words", "No word goes on at either end");
  gitignore_ = make_option("Honour .&gitignore", "Leave out the files that .gitignore names");
  add(0, 0, "&Find:", find_, 3);
  grid->addWidget(find_button_, 0, 4);
  add(1, 0, "Re&place:", replace_, 3);
  grid->addWidget(stop_, 1, 4);
  auto* const options = new QHBoxLayout;
  for (QCheckBox* const box : {pattern_, ignore_case_, whole_words_, gitignore_})
    options->addWidget(box);
  options->addStretch();
  grid->addLayout(options, 2, 1, 1, 4);
  add(3, 0, "Sear&ch in:", where_);
  add(3, 2, "Sc&ope:", scope_, 2);
  add(4, 0, "O&nly files:", included_);
  add(4, 2, "&Without:", excluded_, 2);
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  return fields;
}

QWidget* ProjectFindWindow::make_buttons() {
  using enum platform::project_find_action;
  auto* const bottom = new QWidget;
  auto* const row = new QHBoxLayout(bottom);
  row->setContentsMargins(0, 0, 0, 0);
  status_ = new QLabel;
  status_->setTextFormat(Qt::PlainText);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  open_ = make_button("Open as Docu&ment", open_as_document,
                      "The lines that were found as a text that can be edited and written back");
  replace_button_ = make_button("Replace &Ticked", replace_ticked, "Replace what is ticked");
  undo_ = make_button("&Undo Replace", undo_replace, "Put back what was replaced last");
  row->addWidget(status_, 1);
  for (QPushButton* const button : {open_, replace_button_, undo_}) row->addWidget(button);
  return bottom;
}

void ProjectFindWindow::make_window() {
  filling_ = true;
  window_ = new Window(*this);
  rows_ = new Rows(*this, window_);
  auto* const column = new QVBoxLayout(window_);
  column->setContentsMargins(space, space, space, space);
  column->setSpacing(space);
  tree_ = new QTreeView;
  tree_->setModel(rows_);
  tree_->setItemDelegate(new RowPainter(*this, tree_));
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setAccessibleName(QStringLiteral("Results"));
  tree_->setExpandsOnDoubleClick(false);
  column->addWidget(make_fields());
  column->addWidget(tree_, 1);
  column->addWidget(make_buttons());
  QObject::connect(tree_, &QTreeView::doubleClicked, window_.data(), [this] { show_row(); });
  set_state({});
  filling_ = false;
}

// Held like all input while something waits.
void ProjectFindWindow::act(platform::project_find_action action) {
  platform::desktop::current().waits().deliver([this, action] {
    if (delegate_ != nullptr) delegate_->projectFindAction(action);
  });
}

void ProjectFindWindow::changed() {
  if (filling_) return;
  platform::desktop::current().waits().deliver([this] {
    if (delegate_ != nullptr) delegate_->projectFindDidChange();
  });
}

void ProjectFindWindow::show_row() {
  QModelIndex const index = tree_->currentIndex();
  if (!index.isValid()) return;
  platform::desktop::current().waits().deliver([this, at = QPersistentModelIndex(index)] {
    if (delegate_ != nullptr && at.isValid()) delegate_->projectFindShow(Rows::place(at));
  });
}

void ProjectFindWindow::did_close() {
  if (delegate_ != nullptr) delegate_->projectFindDidClose();
}

void ProjectFindWindow::order_front() {
  if (window_ == nullptr) make_window();
  window_->show();
  window_->raise();
  window_->activateWindow();
  find_->setFocus(Qt::ShortcutFocusReason);
  find_->lineEdit()->selectAll();
}

void ProjectFindWindow::close() {
  if (is_visible()) window_->close();
}

bool ProjectFindWindow::is_visible() const {
  return window_ != nullptr && window_->isVisible();
}

platform::project_find_values ProjectFindWindow::values() const {
  if (window_ == nullptr) return {};
  return {.find = utf8(find_->currentText()),
          .replace = utf8(replace_->currentText()),
          .regular_expression = pattern_->isChecked(),
          .ignore_case = ignore_case_->isChecked(),
          .whole_words = whole_words_->isChecked(),
          .included = utf8(included_->text()),
          .excluded = utf8(excluded_->text()),
          .gitignore = gitignore_->isChecked(),
          .scope = utf8(scope_->currentText()),
          .where = static_cast<std::size_t>(std::max(where_->currentIndex(), 0))};
}

void ProjectFindWindow::set_values(platform::project_find_values const& v) {
  if (window_ == nullptr) make_window();
  filling_ = true;
  find_->setEditText(qstring(v.find));
  replace_->setEditText(qstring(v.replace));
  scope_->setEditText(qstring(v.scope));
  included_->setText(qstring(v.included));
  excluded_->setText(qstring(v.excluded));
  pattern_->setChecked(v.regular_expression);
  ignore_case_->setChecked(v.ignore_case);
  whole_words_->setChecked(v.whole_words);
  gitignore_->setChecked(v.gitignore);
  where_->setCurrentIndex(static_cast<int>(v.where));
  filling_ = false;
}

void ProjectFindWindow::set_places(std::vector<std::string> const& titles) {
  static constexpr std::array<char const*, 4> names = {"Project", "Folder", "Open files",
                                                       "Selection in the tree"};
  if (window_ == nullptr) make_window();
  filling_ = true;
  where_->clear();
  for (std::size_t n = 0; n < titles.size(); ++n) {
    where_->addItem(titles[n].empty() ? QString::fromUtf8(names[n]) : qstring(titles[n]));
    int const row = static_cast<int>(n);
    // The model of a combo box takes flags in this role.
    if (titles[n].empty()) where_->setItemData(row, 0, Qt::UserRole - 1);
  }
  filling_ = false;
}

void ProjectFindWindow::set_histories(std::vector<std::string> const& find,
                                      std::vector<std::string> const& replace) {
  if (window_ == nullptr) make_window();
  filling_ = true;
  auto const fill = [](QComboBox& field, std::vector<std::string> const& entries) {
    QString const text = field.currentText();
    field.clear();
    for (std::string const& entry : entries) field.addItem(qstring(entry));
    field.setEditText(text);
  };
  fill(*find_, find);
  fill(*replace_, replace);
  filling_ = false;
}

void ProjectFindWindow::set_status(std::string const& text) {
  if (window_ == nullptr) return;
  status_->setText(qstring(text));
  status_->setToolTip(qstring(text));
}

void ProjectFindWindow::mark_error(std::size_t offset) {
  if (window_ != nullptr) mark_wrong_text(*find_->lineEdit(), offset);
}

void ProjectFindWindow::set_state(state const& s) {
  if (window_ == nullptr) return;
  find_button_->setEnabled(!s.is_running);
  stop_->setEnabled(s.is_running);
  replace_button_->setEnabled(s.can_replace);
  undo_->setEnabled(s.can_undo);
  open_->setVisible(s.can_open);
}

void ProjectFindWindow::rows_did_reset() {
  if (window_ == nullptr) return;
  rows_->reset();
  rows_were_added(0);
}

void ProjectFindWindow::rows_were_added(std::size_t first_file) {
  if (window_ == nullptr) return;
  rows_->grow();
  auto const last =
      std::min<std::size_t>(most_opened, static_cast<std::size_t>(rows_->rowCount({})));
  for (std::size_t file = first_file; file < last; ++file)
    tree_->expand(rows_->index_of({.file = file, .match = {}}));
}

void ProjectFindWindow::rows_did_change() {
  if (window_ != nullptr) tree_->viewport()->update();
}

void ProjectFindWindow::select(platform::project_find_place place) {
  if (window_ == nullptr) return;
  QModelIndex const index = rows_->index_of(place);
  tree_->setCurrentIndex(index);
  tree_->scrollTo(index);
}

}  // namespace widgets
