#include "desktop/QtDesktop.h"

#include "desktop/Announcement.h"
#include "desktop/EditorWindow.h"
#include "desktop/FileManager.h"
#include "desktop/ImageStore.h"
#include "desktop/LeanStyle.h"
#include "desktop/OutputWindow.h"
#include "desktop/QtText.h"
#include "desktop/SuddenExit.h"
#include "desktop/TerminationSignals.h"
#include "keys/WynKeyEvent.h"
#include "keys/key_strings.h"
#include "platform/system/memory_reserve.h"

#include <QDrag>
#include <QIcon>
#include <QSessionManager>
#include <QTimer>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <new>

namespace widgets {
bool Application::event(QEvent* event) {
  if (event->type() != QEvent::Quit || !on_quit) return QApplication::event(event);
  event->accept();
  on_quit();
  return true;
}

bool Application::notify(QObject* receiver, QEvent* event) try {
  return QApplication::notify(receiver, event);
} catch (std::bad_alloc const&) {
  bool const shows_only = event->type() == QEvent::Paint || event->type() == QEvent::UpdateRequest;
  if (shows_only || is_telling_) return true;
  is_telling_ = true;
  // Not from here: what was interrupted may hold locks of the window system's side.
  QTimer::singleShot(0, this, [this] {
    platform::desktop::current().alerts().run(
        {"Out of Memory",
         "There was not enough memory for what you have just done. Save your documents, and close "
         "those that you don't need.",
         {"Continue"},
         0,
         true});
    is_telling_ = false;
    platform::refill_memory_reserve();
  });
  return true;
}

QtDesktop::QtDesktop(int& argc, char** argv)
    : qt_(argc, argv), general_(QClipboard::Clipboard), primary_(make_primary_selection()) {
  // Qt has taken the user's locale. Numbers in property lists, commands and reports are
  // everybody's.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName(QStringLiteral("quirnote"));
  QApplication::setApplicationDisplayName(QStringLiteral("Quirnote"));
  QApplication::setDesktopFileName(QStringLiteral("quirnote"));
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setStyle(new LeanStyle);
  install_accessible_parts();
  qt_.installEventFilter(&waiting_keys_);
  set_current(this);
}

QtDesktop::~QtDesktop() {
  // The widgets of windows that went after the last turn of the loop.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  set_current(nullptr);
}

std::unique_ptr<platform::editor_window> QtDesktop::make_window(platform::window_delegate& delegate,
                                                                platform::view_client& client,
                                                                platform::responder& first) {
  return std::make_unique<EditorWindow>(*this, delegate, client, first);
}

std::unique_ptr<platform::html_window> QtDesktop::make_html_window(
    platform::html_window_delegate& delegate) {
  return std::make_unique<OutputWindow>(*this, delegate);
}

void QtDesktop::show_in_file_manager(std::vector<std::string> const& paths) {
  widgets::show_in_file_manager(paths);
}

std::vector<platform::window*> QtDesktop::ordered_windows() const {
  std::vector<platform::window*> shown;
  for (platform::window* const window : windows_)
    if (window->is_visible()) shown.push_back(window);
  std::stable_partition(shown.begin(), shown.end(),
                        [](platform::window* w) { return !w->is_miniaturized(); });
  return shown;
}

void QtDesktop::bring_to_front(platform::window& window) {
  auto const it = std::find(windows_.begin(), windows_.end(), &window);
  if (it != windows_.end()) std::rotate(windows_.begin(), it, it + 1);
}

// What is open in a dialog, such as the menu of a file in a panel or a question about its name,
// runs a loop of its own and comes first.
void QtDesktop::dismiss_dialog() {
  QDrag::cancel();
  if (QWidget* const popup = QApplication::activePopupWidget()) popup->close();
  if (auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget()))
    dialog->reject();
}

// At the next turn, since the logic may replace the last window by another one.
void QtDesktop::window_closed() {
  loop_.post([this] {
    waits_.deliver([this] {
      if (ordered_windows().empty()) ask_to_quit();
    });
  });
}

void QtDesktop::ask_to_quit() {
  if (delegate_ == nullptr) return terminate();
  request_quit(*delegate_);
}

void QtDesktop::connect_session() {
  qt_.on_quit = [this] { ask_to_quit(); };
  QObject::connect(&qt_, &QGuiApplication::commitDataRequest, &qt_,
                   [this](QSessionManager& session) {
                     if (delegate_ == nullptr) return;
                     bool const may_ask = session.allowsInteraction();
                     if (!end_session(*delegate_, may_ask)) session.cancel();
                     if (may_ask) session.release();
                   });
}

int QtDesktop::run(platform::application_delegate& app) {
  delegate_ = &app;
  terminated_ = false;
  connect_session();
  // No alert can be answered after a signal or on a lost display.
  TerminationSignals const termination([this] { end_at_once(*delegate_); });
  SuddenExit const lost_display([this] {
    TerminationSignals::hold();
    return end_within_exit(*delegate_);
  });
  QObject::connect(&qt_, &QGuiApplication::applicationStateChanged, &qt_,
                   [this](Qt::ApplicationState state) {
                     if (delegate_ == nullptr) return;
                     if (state == Qt::ApplicationActive)
                       delegate_->applicationDidBecomeActive();
                     else
                       delegate_->applicationWillResignActive();
                   });
  app.didFinishLaunching();
  // Not needed for the first window to appear.
  QTimer::singleShot(0, &qt_, [] {
    QApplication::setWindowIcon(QIcon(QPixmap::fromImage(image_named("quirnote", 1))));
  });
  int const status = terminated_ ? 0 : QApplication::exec();
  delegate_ = nullptr;
  menu_.reset();
  items_by_key_.clear();
  return has_lost_text() ? EXIT_FAILURE : status;
}

void QtDesktop::terminate() {
  terminated_ = true;
  QApplication::exit(0);
}

menu_items const& QtDesktop::main_menu() {
  if (!menu_) {
    using items = std::vector<platform::menu_item>;
    menu_ = std::make_shared<items const>(delegate_ != nullptr ? delegate_->mainMenu() : items());
    index_keys(*menu_);
  }
  return menu_;
}

void QtDesktop::index_keys(std::vector<platform::menu_item> const& items) {
  for (platform::menu_item const& item : items) {
    index_keys(item.items);
    if (!item.selector.empty() && !item.key.empty())
      items_by_key_.emplace(keys::with_capital_for_shift(item.key), &item);
  }
}

platform::menu_item const* QtDesktop::item_for_key(platform::key_event const& event) {
  main_menu();
  std::string const key = WynKeyEvent::keyEventWithEvent(event).stringRepresentation();
  auto it = items_by_key_.find(key);
  // A key of the keypad does what its twin on the main keyboard does.
  if (it == items_by_key_.end() && key.size() > 1 && key[0] == '#')
    it = items_by_key_.find(key.substr(1));
  return it == items_by_key_.end() ? nullptr : it->second;
}

}  // namespace widgets
