#pragma once

#include <QStringList>

#include <optional>

/// The program's options, besides those of Qt.
namespace CommandLine {

inline const QString action = QStringLiteral("action");
inline const QString debug = QStringLiteral("debug");
inline const QString help = QStringLiteral("help");
inline const QString screenshot = QStringLiteral("screenshot");
inline const QString installVolume = QStringLiteral("QNInstallVolume"); ///< of a copy, by itself
inline const QString version = QStringLiteral("version");

QStringList options();

/// Handles the arguments before anything is started: prints the help or the version, or an error on
/// standard error about an unknown "--option" or an option without its value. Returns the exit
/// status then; nothing if the program should start.
///
/// Other words with one dash, "name=value" and plain arguments are ignored.
[[nodiscard]] std::optional<int> answer(const QStringList& arguments);

} // namespace CommandLine
