#include "desktop/QtText.h"
#include "desktop/TextViewWidget.h"

#include <QAccessible>

// What assistive programs hear of a text. AccessibleText is what they read.

namespace widgets {

platform::accessible_text* TextViewWidget::accessible_text() {
  return client_ == nullptr ? nullptr : client_->begin_access(*this);
}

void TextViewWidget::end_access() {
  if (client_ != nullptr) client_->end_access();
}

void TextViewWidget::text_inserted(std::size_t at, std::u16string const& text) {
  if (!QAccessible::isActive()) return;
  QAccessibleTextInsertEvent event(this, static_cast<int>(at), qstring(text));
  QAccessible::updateAccessibility(&event);
}

void TextViewWidget::text_erased(std::size_t at, std::u16string const& text) {
  if (!QAccessible::isActive()) return;
  QAccessibleTextRemoveEvent event(this, static_cast<int>(at), qstring(text));
  QAccessible::updateAccessibility(&event);
}

// The first call after the last program stopped listening is the last one.
void TextViewWidget::caret_moved() {
  if (!QAccessible::isActive()) return end_access();
  platform::accessible_text* const text = accessible_text();
  if (text == nullptr) return;
  int const caret = static_cast<int>(text->caret());
  bool const has_selection = text->selection_count() > 0;
  if (has_selection || had_selection_) {
    platform::unit_range const range = text->selection(0);
    QAccessibleTextSelectionEvent event(this, static_cast<int>(range.first),
                                        static_cast<int>(range.last));
    event.setCursorPosition(caret);
    QAccessible::updateAccessibility(&event);
  }
  had_selection_ = has_selection;
  QAccessibleTextCursorEvent event(this, caret);
  QAccessible::updateAccessibility(&event);
}

}  // namespace widgets
