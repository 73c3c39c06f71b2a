#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace updown {

// QString is UTF-16 too, so these only copy.
inline QString ToQString(std::u16string_view wide) {
  return QString(reinterpret_cast<const QChar*>(wide.data()), static_cast<qsizetype>(wide.size()));
}
inline std::u16string ToWide(const QString& text) { return text.toStdU16String(); }

// Paths and names: UTF-8 outside the windows.
inline QString FromUtf8(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}
inline std::string ToUtf8(const QString& text) { return text.toStdString(); }

}  // namespace updown
