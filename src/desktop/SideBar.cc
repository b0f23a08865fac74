#include "desktop/SideBar.h"

#include <QApplication>

namespace widgets {

SideBar::SideBar(platform::tree_client& client, platform::responder& actions, TextViewOwner& owner,
                 QSplitter& splitter, QWidget& text)
    : QObject(&splitter),
      tree_(new TreeWidget(client, owner, nullptr)),
      actions_(actions),
      splitter_(splitter),
      text_(text) {
  tree_->hide();
  splitter_.insertWidget(0, tree_);
  splitter_.setStretchFactor(0, 0);
  connect(&splitter_, &QSplitter::splitterMoved, this,
          [this] { tree_->wanted_width = tree_->width(); });
  // A menu that is open has the focus, and is there for the one who had it before.
  connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
    if (now == tree_ || now == &text_) was_in_tree_ = now == tree_;
  });
}

platform::responder* SideBar::focused_responder() const {
  return was_in_tree_ && is_shown_ && tree_->has_client() ? &actions_ : nullptr;
}

QWidget& SideBar::last_focused() const {
  return was_in_tree_ && is_shown_ ? *tree_ : text_;
}

void SideBar::set_visible(bool visible) {
  if (visible == is_shown_) return;
  bool const had_focus = tree_->has_focus();
  is_shown_ = visible;
  tree_->setVisible(visible);
  if (visible) take_width();
  if (!visible && had_focus) text_.setFocus();
}

bool SideBar::is_on_right() const {
  return splitter_.indexOf(tree_) != 0;
}

void SideBar::set_on_right(bool right) {
  if (right == is_on_right()) return;
  splitter_.insertWidget(right ? splitter_.count() - 1 : 0, tree_);
  tree_->setVisible(is_shown_);
  take_width();
}

void SideBar::set_width(int width) {
  tree_->wanted_width = width;
  tree_->updateGeometry();
  take_width();
}

// Of the place at the other end. A window that isn't shown yet gives what the tree wants.
void SideBar::take_width() {
  if (!is_shown_ || !splitter_.isVisible()) return;
  QList<int> sizes = splitter_.sizes();
  auto const at = splitter_.indexOf(tree_), other = at == 0 ? int(sizes.size()) - 1 : 0;
  sizes[other] += sizes[at] - tree_->wanted_width;
  sizes[at] = tree_->wanted_width;
  splitter_.setSizes(sizes);
}

void SideBar::set_font_size(double size) {
  QFont font = tree_->font();
  font.setPointSizeF(size);
  tree_->setFont(font);
}

void SideBar::set_focus(bool to_tree) {
  if (to_tree && is_shown_)
    tree_->setFocus(Qt::OtherFocusReason);
  else
    text_.setFocus(Qt::OtherFocusReason);
}

}  // namespace widgets
