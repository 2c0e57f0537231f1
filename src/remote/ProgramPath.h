#pragma once

#include <QString>

/// The paths of the objects.
namespace ProgramPath {

inline const QString root = QStringLiteral("/com/quarnel/Tonvale");
inline const QString programs = root + QStringLiteral("/programs");

/// The last part of the path of a program's object: its process name, in which every byte that is
/// not an ASCII letter or digit is escaped as '_' and two hexadecimal digits. So the path of a
/// program is the same in all sessions.
QString lastPart(const QString& processName);

QString of(const QString& processName);

} // namespace ProgramPath
