#pragma once

#include <QCoreApplication>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QTextCharFormat>

#include <string>

namespace widgets {

/// Marks the text of a field from this unit on as wrong; with npos none of it. The field takes
/// formats for parts of its text from input methods only.
inline void mark_wrong_text(QLineEdit& field, std::size_t offset) {
  QList<QInputMethodEvent::Attribute> marks;
  if (offset != std::string::npos) {
    QTextCharFormat wrong;
    wrong.setForeground(Qt::white);
    wrong.setBackground(QColor(0xC0, 0x20, 0x20));
    int const start = static_cast<int>(offset) - field.cursorPosition();
    int const length = static_cast<int>(field.text().size()) - static_cast<int>(offset);
    marks.append({QInputMethodEvent::TextFormat, start, length, wrong});
  }
  QInputMethodEvent event(QString(), marks);
  QCoreApplication::sendEvent(&field, &event);
}

}  // namespace widgets
