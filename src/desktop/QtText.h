#pragma once

#include <QString>

#include <string>
#include <string_view>

/// Strings on their way between the logic (UTF-8 or UTF-16) and Qt.
namespace widgets {

inline QString qstring(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

inline QString qstring(std::u16string_view text) {
  return QString(reinterpret_cast<QChar const*>(text.data()), static_cast<qsizetype>(text.size()));
}

inline std::string utf8(QString const& text) {
  return text.toStdString();
}

inline std::u16string utf16(QString const& text) {
  return text.toStdU16String();
}

}  // namespace widgets
