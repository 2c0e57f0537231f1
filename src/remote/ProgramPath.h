#pragma once

#include <QString>

/// Where the objects are.
namespace ProgramPath {

inline const QString root = QStringLiteral("/com/quarnel/Tonvale");
inline const QString programs = root + QStringLiteral("/programs");

/// The last part of the path of a program's object: its process name, of which only letters and
/// digits of ASCII stand as they are, any other byte as '_' and two hexadecimal digits. So the path
/// of a program is the same in all sessions.
QString lastPart(const QString& processName);

QString of(const QString& processName);

} // namespace ProgramPath
