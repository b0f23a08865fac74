#pragma once

#include "platform/accessible_text.h"

#include <QAccessibleWidget>

namespace widgets {

class TextViewWidget;

/// A text view as assistive programs see it. Owned by Qt.
class AccessibleText final : public QAccessibleWidget,
                             public QAccessibleTextInterface,
                             public QAccessibleEditableTextInterface {
 public:
  explicit AccessibleText(TextViewWidget& widget);

  // QAccessibleInterface
  void* interface_cast(QAccessible::InterfaceType type) override;
  QAccessible::State state() const override;
  int childCount() const override { return 0; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  int indexOfChild(QAccessibleInterface const*) const override { return -1; }

  // QAccessibleTextInterface
  int selectionCount() const override;
  void selection(int index, int* first, int* last) const override;
  void addSelection(int first, int last) override { setSelection(0, first, last); }
  void removeSelection(int index) override;
  void setSelection(int index, int first, int last) override;
  int cursorPosition() const override;
  void setCursorPosition(int offset) override { setSelection(0, offset, offset); }
  QString text(int first, int last) const override;
  using QAccessibleWidget::text;
  QString textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                           int* last) const override;
  QString textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                          int* last) const override;
  QString textAtOffset(int offset, QAccessible::TextBoundaryType type, int* first,
                       int* last) const override;
  int characterCount() const override;
  QRect characterRect(int offset) const override;
  int offsetAtPoint(QPoint const& point) const override;
  void scrollToSubstring(int first, int last) override;
  QString attributes(int offset, int* first, int* last) const override;

  // QAccessibleEditableTextInterface
  void deleteText(int first, int last) override { replaceText(first, last, QString()); }
  void insertText(int offset, QString const& text) override { replaceText(offset, offset, text); }
  void replaceText(int first, int last, QString const& text) override;

 private:
  using text_range = platform::unit_range;

  TextViewWidget& view() const;
  /// Null as long as the widget shows no text.
  platform::accessible_text* shown() const;
  text_range range_at(platform::accessible_text& text, std::size_t offset,
                      QAccessible::TextBoundaryType type) const;
  QString told(text_range range, int* first, int* last) const;
};

}  // namespace widgets
