#pragma once

#include "desktop/FindBar.h"
#include "desktop/FramedWindow.h"
#include "desktop/OfferList.h"
#include "desktop/SideBar.h"
#include "desktop/StatusBar.h"
#include "desktop/TabBar.h"
#include "desktop/TextViewWidget.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace widgets {

/// The widget of an editor window.
class EditorFrame final : public WindowFrame, public TextViewOwner, public FindBarPlace {
 public:
  EditorFrame(WindowOwner& owner, platform::window& window, platform::view_client& client);

  void detach() override;
  void take_initial_size() override;
  void enter_status_bar() override { status_->enter(); }
  StatusBar& status() { return *status_; }
  /// What has the text and all that stands above and below it as its last place, and before that
  /// those for what stands beside it. Made when it is first asked for.
  QSplitter& splitter();
  TabBar& tabs(platform::tab_bar_delegate& delegate);
  OfferList& offers() { return *offers_; }
  platform::side_bar& side(platform::tree_client& client, platform::responder& actions);
  platform::responder* focused_responder() const override;

  // TextViewOwner
  bool should_swallow(platform::key_event const& event) override;
  bool perform_key_equivalent(platform::key_event const& event) override;
  bool open_menu_with_letter(QString const& letter) override;
  void open_first_menu() override { menus().open_first(); }
  void pop_up_menu(std::vector<platform::menu_item> const& items, QPoint global) override;
  void change_text_size(bool larger) override;
  std::uint32_t window_number() const override { return number_; }

  // FindBarPlace
  void take_find_bar(QWidget* bar) override {
    column_->insertWidget(column_->indexOf(text_) + 1, bar);
  }
  void focus_text() override { text_->setFocus(); }
  bool perform_menu_key(QKeyEvent const& event) override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void open_status_menu(std::string const& part, QPoint global);

  std::uint32_t const number_;
  QSplitter* splitter_ = nullptr;
  QVBoxLayout* column_;
  TabBar* tabs_ = nullptr;
  SideBar* side_ = nullptr;
  TextViewWidget* text_;
  StatusBar* status_;
  OfferList* offers_;
  KeyTranslation keys_;
};

/// A window with one text view and a status bar, and what else is asked for.
class EditorWindow final : public FramedWindow<platform::editor_window, EditorFrame> {
 public:
  EditorWindow(WindowOwner& owner, platform::window_delegate& delegate,
               platform::view_client& client, platform::responder& first)
      : FramedWindow(owner, delegate, first, client) {}

  void set_title(std::string const& title) override;
  void set_represented_filename(std::string const& path) override;
  void set_document_edited(bool edited) override { widget().setWindowModified(edited); }
  void close() override;
  void update_value(std::string_view key, plist::value const& value) override;
  platform::tab_bar& tabs(platform::tab_bar_delegate& delegate) override {
    return widget().tabs(delegate);
  }
  void set_offers(std::vector<platform::menu_item> const& items) override {
    widget().offers().set_items(items);
  }
  platform::side_bar& side(platform::tree_client& client, platform::responder& actions) override {
    return widget().side(client, actions);
  }
};

}  // namespace widgets
