#include "desktop/Announcement.h"

#include "desktop/AccessibleStatusBar.h"
#include "desktop/AccessibleText.h"
#include "desktop/StatusBar.h"
#include "desktop/TextViewWidget.h"

#include <QAccessibleWidget>

namespace widgets {
namespace {

// What is announced is its name. Screen readers say a notification that begins to show.
class Notice final : public QWidget {
 public:
  explicit Notice(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setGeometry(0, 0, 1, 1);
  }
};

/// Null unless it is one of this class, which has no meta-object of its own. Others' classes may
/// have been built without type information, as those of pages are, and can't be asked.
template <class T>
T* as(QObject* object) {
  return object->metaObject() == &T::staticMetaObject ? dynamic_cast<T*>(object) : nullptr;
}

QAccessibleInterface* make_interface(QString const&, QObject* object) {
  if (auto* const text = as<TextViewWidget>(object)) return new AccessibleText(*text);
  if (auto* const bar = as<StatusBar>(object)) return new AccessibleStatusBar(*bar);
  if (auto* const notice = as<Notice>(object))
    return new QAccessibleWidget(notice, QAccessible::Notification);
  return nullptr;
}

Notice& notice_of(QWidget& window) {
  for (QObject* const child : window.children())
    if (auto* const notice = as<Notice>(child)) return *notice;
  return *new Notice(&window);
}

}  // namespace

void announce(QWidget& window_part, QString const& text) {
  if (text.isEmpty() || !QAccessible::isActive()) return;
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  QAccessibleAnnouncementEvent event(&window_part, text);
#else
  Notice& notice = notice_of(*window_part.window());
  notice.setAccessibleName(text);
  if (notice.isHidden()) return notice.show();
  QAccessibleEvent event(&notice, QAccessible::ObjectShow);
#endif
  QAccessible::updateAccessibility(&event);
}

void install_accessible_parts() {
  QAccessible::installFactory(make_interface);
}

}  // namespace widgets
