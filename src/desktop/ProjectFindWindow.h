#pragma once

#include "platform/panels/project_find_panel.h"

#include <QPointer>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeView;
class QWidget;

namespace widgets {

/// The window for finding in projects: fields and options above the tree of results.
class ProjectFindWindow final : public platform::project_find_panel {
 public:
  ProjectFindWindow() = default;
  ~ProjectFindWindow() override;

  void set_delegate(platform::project_find_delegate* delegate) override;
  void order_front() override;
  void close() override;
  bool is_visible() const override;
  platform::project_find_values values() const override;
  void set_values(platform::project_find_values const& v) override;
  void set_places(std::vector<std::string> const& titles) override;
  void set_histories(std::vector<std::string> const& find,
                     std::vector<std::string> const& replace) override;
  void set_status(std::string const& text) override;
  void mark_error(std::size_t offset) override;
  void set_state(state const& s) override;
  void rows_did_reset() override;
  void rows_were_added(std::size_t first_file) override;
  void rows_did_change() override;
  void select(platform::project_find_place place) override;

 private:
  class Window;
  class Rows;
  class RowPainter;

  void make_window();
  QWidget* make_fields();
  QWidget* make_buttons();
  QCheckBox* make_option(char const* title, char const* tip);
  QPushButton* make_button(char const* title, platform::project_find_action action,
                           char const* tip);
  void act(platform::project_find_action action);
  void changed();
  void show_row();
  void did_close();

  platform::project_find_delegate* delegate_ = nullptr;
  QPointer<Window> window_;  // made when it is first wanted
  Rows* rows_ = nullptr;
  QTreeView* tree_ = nullptr;
  QComboBox *find_ = nullptr, *replace_ = nullptr, *where_ = nullptr, *scope_ = nullptr;
  QLineEdit *included_ = nullptr, *excluded_ = nullptr;
  QCheckBox *pattern_ = nullptr, *ignore_case_ = nullptr, *whole_words_ = nullptr,
            *gitignore_ = nullptr;
  QPushButton *find_button_ = nullptr, *stop_ = nullptr, *replace_button_ = nullptr,
              *undo_ = nullptr, *open_ = nullptr;
  QLabel* status_ = nullptr;
  bool filling_ = false;
};

}  // namespace widgets
