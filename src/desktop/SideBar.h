#pragma once

#include "desktop/TreeWidget.h"
#include "platform/responder.h"
#include "platform/tree/side_bar.h"

#include <QObject>
#include <QSplitter>

namespace widgets {

/// The tree beside a window's text: where it stands, how wide it is, and whether the keyboard is
/// there.
class SideBar final : public QObject, public platform::side_bar {
 public:
  /// Puts a tree into the splitter, the last place of which has `text` in it. All must outlive it.
  SideBar(platform::tree_client& client, platform::responder& actions, TextViewOwner& owner,
          QSplitter& splitter, QWidget& text);

  void detach() { tree_->detach(); }
  /// What gets the actions of menus while the keyboard is in the tree; else null.
  platform::responder* focused_responder() const;
  /// The tree or the text.
  QWidget& last_focused() const;

  // platform::side_bar
  bool is_visible() const override { return is_shown_; }
  void set_visible(bool visible) override;
  bool is_on_right() const override;
  void set_on_right(bool right) override;
  int width() const override { return tree_->wanted_width; }
  void set_width(int width) override;
  void set_font_size(double size) override;
  bool has_focus() const override { return tree_->has_focus(); }
  void set_focus(bool to_tree) override;

 private:
  void take_width();

  TreeWidget* const tree_;  // a child of the splitter
  platform::responder& actions_;
  QSplitter& splitter_;
  QWidget& text_;
  bool is_shown_ = false, was_in_tree_ = false;  // the keyboard, last
};

}  // namespace widgets
