#pragma once

#include "platform/menu.h"

#include <QListWidget>

#include <functional>
#include <vector>

namespace widgets {

/// The files that a window with nothing in it offers: a quiet list over the empty text, which keeps
/// the focus until a key or a click chooses among them. A child of the text's widget.
class OfferList final : public QListWidget {
 public:
  using chooser = std::function<void(platform::menu_item const&)>;

  /// `choose` gets the item that the user takes, `leave` the focus when none is wanted.
  OfferList(QWidget& text, chooser choose, std::function<void()> leave);

  /// None hides it.
  void set_items(std::vector<platform::menu_item> items);
  /// The first item is selected, and keys go to the list.
  void enter();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void take(int row);
  void fit();

  QWidget& text_;
  chooser choose_;
  std::function<void()> leave_;
  std::vector<platform::menu_item> items_;
};

}  // namespace widgets
