#pragma once

#include "platform/find_panel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QKeySequence>
#include <QLabel>

#include <memory>

namespace widgets {

/// The find panel as a window that stays before the editor windows and lets them be used.
class FindPanel final : public platform::find_panel {
 public:
  FindPanel();
  ~FindPanel() override;

  void set_delegate(platform::find_panel_delegate* delegate) override { delegate_ = delegate; }
  void order_front(bool replace_field) override;
  void close() override;
  bool is_visible() const override;
  platform::find_panel_values values() const override;
  void set_values(platform::find_panel_values const& v) override;
  void set_histories(std::vector<std::string> const& find,
                     std::vector<std::string> const& replace) override;
  void set_status(std::string const& text) override;
  void mark_error(std::size_t offset) override;

  /// Null as long as it hasn't been shown.
  QWidget* dialog() const;

 private:
  class Dialog;
  class Button;

  void make_dialog();
  void make_buttons(QGridLayout& grid);
  void add_key(QKeySequence const& key, platform::find_action action, bool by_key);
  void act(platform::find_action action, Qt::KeyboardModifiers held, bool by_key);
  void changed();
  void place_over(QWidget* window);

  platform::find_panel_delegate* delegate_ = nullptr;
  std::unique_ptr<Dialog> dialog_;  // made when it is first shown
  QComboBox* find_ = nullptr;
  QComboBox* replace_ = nullptr;
  QCheckBox* regular_expression_ = nullptr;
  QCheckBox* ignore_case_ = nullptr;
  QCheckBox* wrap_around_ = nullptr;
  QLabel* status_ = nullptr;
  platform::find_panel_values values_;  // until there is a dialog
  std::vector<std::string> find_history_, replace_history_;
  bool filling_ = false;
};

}  // namespace widgets
