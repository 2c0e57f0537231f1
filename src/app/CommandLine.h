#pragma once

#include "framework/application/OptionParser.h"

#include <QStringList>

/// The options that the program takes, besides those of Qt.
namespace CommandLine {

inline const QString debug = QStringLiteral("debug");
inline const QString help = QStringLiteral("help");
inline const QString screenshot = QStringLiteral("screenshot");
inline const QString version = QStringLiteral("version");

QStringList options();

/// Prints what --help and --version ask for; false when neither is among the options.
bool answer(const QNOptions& options);

} // namespace CommandLine
