#pragma once

#include "platform/find_panel.h"

#include <QKeyEvent>
#include <QPointer>

#include <string>
#include <utility>
#include <vector>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;

namespace widgets {

/// A window that has room for the find bar.
class FindBarPlace {
 public:
  /// Puts it below the text, which gives up some of its height as long as it is shown.
  virtual void take_find_bar(QWidget* bar) = 0;
  virtual void focus_text() = 0;
  /// Performs the menu item that has this key; false if there is none.
  virtual bool perform_menu_key(QKeyEvent const& event) = 0;

 protected:
  ~FindBarPlace() = default;
};

/// The find panel as a bar: in the window for which it was asked last, and closed with that. While
/// the keys go to it, its mnemonics are tried before those of menus.
class FindBar final : public platform::find_panel {
 public:
  FindBar() = default;
  ~FindBar() override;

  void set_delegate(platform::find_panel_delegate* delegate) override { delegate_ = delegate; }
  void order_front(bool replace_field) override;
  void close() override;
  bool is_visible() const override;
  platform::find_panel_values values() const override;
  void set_values(platform::find_panel_values const& v) override;
  void set_histories(std::vector<std::string> const& find,
                     std::vector<std::string> const& replace) override;
  void set_status(std::string const& text) override;
  void set_count(std::string const& text) override;
  void set_preview(std::string const& text) override;
  void mark_error(std::size_t offset) override;

  /// Whether the key is one of its mnemonics, when the keys go to it.
  bool has_mnemonic(QKeyEvent const& event) const;

 private:
  class Bar;
  class Button;
  class Field;
  class ElidedLabel;
  class Row;

  void make_bar();
  Row* make_find_row();
  Row* make_replace_row();
  Row* make_options_row();
  QLabel* make_label(char const* title, QLineEdit* field);
  QCheckBox* make_option(char const* title, char const* tip);
  QAbstractButton* make_button(char const* title, platform::find_action action, char const* tip);
  void add_mnemonic(QString const& text, QWidget* widget);
  bool handle_key(QWidget* at, QKeyEvent const& event);
  bool perform_mnemonic(QKeyEvent const& event);
  void act(platform::find_action action, Qt::KeyboardModifiers held = {}, bool by_key = false);
  void changed();
  void show_replacing(bool replaces);
  FindBarPlace* place() const;
  void leave_window();

  platform::find_panel_delegate* delegate_ = nullptr;
  QPointer<Bar> bar_;  // made when it is first shown, a child of its window
  Field* find_ = nullptr;
  Field* replace_ = nullptr;
  QCheckBox* regular_expression_ = nullptr;
  QCheckBox* ignore_case_ = nullptr;
  QCheckBox* whole_words_ = nullptr;
  QCheckBox* in_selection_ = nullptr;
  QCheckBox* wrap_around_ = nullptr;
  QLabel* count_ = nullptr;
  ElidedLabel* status_ = nullptr;
  ElidedLabel* preview_ = nullptr;
  QWidget* replace_row_ = nullptr;  // shown while one replaces
  std::vector<std::pair<QChar, QWidget*>> mnemonics_;
  platform::find_panel_values values_;  // until there is a bar
  std::vector<std::string> find_history_, replace_history_;
  bool filling_ = false, replaces_ = false;
};

}  // namespace widgets
