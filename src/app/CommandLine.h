#pragma once

#include <QStringList>

#include <optional>

/// The options that the program takes, besides those of Qt.
namespace CommandLine {

inline const QString debug = QStringLiteral("debug");
inline const QString help = QStringLiteral("help");
inline const QString screenshot = QStringLiteral("screenshot");
inline const QString version = QStringLiteral("version");

QStringList options();

/// Does what the arguments ask for before anything is started: prints a help or the version, or
/// complains on standard error about "--options" that neither this program nor Qt knows and about
/// options that lack their value. Answers the exit status then; nothing when the program may start.
///
/// Other words with one dash, "name=value" and plain arguments are legal and mean nothing.
std::optional<int> answer(const QStringList& arguments);

} // namespace CommandLine
