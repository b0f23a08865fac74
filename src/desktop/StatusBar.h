#pragma once

#include "plist/value.h"

#include <QBasicTimer>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace widgets {

/// The line below the text: caret, mode, encoding, line endings, tabs. Paints itself, since a row
/// of labels would lay out the whole window again at each move of the caret.
class StatusBar final : public QWidget {
 public:
  /// Called when a part is clicked, with the key of its value and the part's top left corner.
  using click_handler = std::function<void(std::string const& key, QPoint global)>;
  StatusBar(click_handler on_click, QWidget* parent);

  /// A value of platform::window::update_value. Shown a moment later, after the text itself.
  void update_value(std::string_view key, plist::value const& value);

  /// Takes the focus until a key leaves it: arrow keys go from part to part, Return clicks.
  void enter();

  /// For assistive programs: the keys of the parts that show, from left to right, and what a part
  /// says, does and covers, which is nothing for one that doesn't show.
  std::vector<std::string> shown_keys() const;
  QString text_of(std::string_view key) const;
  QString tool_tip_of(std::string_view key) const;
  QRect area_of(std::string_view key) const;
  void press(std::string_view key);
  /// The part to which the keys go.
  std::string const& entered() const { return entered_; }

  QSize sizeHint() const override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool focusNextPrevChild(bool next) override;
  void focusInEvent(QFocusEvent*) override { entered_changed(); }
  void focusOutEvent(QFocusEvent*) override { update(); }
  void paintEvent(QPaintEvent*) override;
  void timerEvent(QTimerEvent*) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent*) override;
  bool event(QEvent* event) override;

 private:
  struct part {
    std::string key;
    QString text;
    int x = 0, width = 0;
    bool is_right = false;
  };

  std::vector<part> parts() const;
  std::vector<part> parts_without(std::vector<std::string_view> const& missed) const;
  part const* part_at(std::vector<part> const& parts, QPoint p) const;
  plist::value const& value(std::string_view key) const;
  void hover(std::string key);
  void leave();
  void move_by(int step);
  void open_entered();
  void entered_changed();
  void tell_changes();

  click_handler on_click_;
  std::map<std::string, plist::value, std::less<>> values_;
  QBasicTimer repaint_;
  QBasicTimer blink_;  // runs while a macro is recorded
  bool is_sign_filled_ = true;
  std::string hovered_, entered_;
  std::map<std::string, QString, std::less<>> told_;  // what assistive programs know of the parts
  QPointer<QWidget> left_;                            // had the focus before
};

}  // namespace widgets
