#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// What main() got, as text.
QStringList argumentTexts(int argc, char** argv);

using QNOptions = QMap<QString, QString>;

/// The options among a program's arguments, of which the first, the program itself, is skipped:
///
///     -v  --verbose        a flag: its value is its own name
///     -name x  --name=x    a value; dashes before the name make no difference
///     name=x  -name = x    the same
///
/// The first plain argument, and "--", end the options. A later option replaces an earlier one of
/// the same name.
QNOptions parseQNOptions(const QStringList& arguments);
