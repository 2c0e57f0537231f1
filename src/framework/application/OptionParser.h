#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <cstdint>

/// The arguments of main(), as text.
QStringList argumentTexts(int argc, char** argv);

/// One option as written among the arguments.
struct QNOption {
    enum class Form : std::uint8_t {
        flag,       ///< without a value
        valued,     ///< "-name x", "--name=x", "name=x" or "-name = x"
        incomplete, ///< "-name =" at the end
    };

    QString argument; ///< with its dashes, and with a value joined by an equals sign
    QString key;
    Form form = Form::flag;
    QString value = {};
};

using QNOptions = QMap<QString, QString>;

/// The options among a program's arguments, in order. The first argument, the program itself, is
/// skipped:
///
///     -v  --verbose        a flag
///     -name x  --name=x    a value; dashes before the name make no difference
///     name=x  -name = x    the same
///
/// The first plain argument, and "--", end the options.
QList<QNOption> readQNOptions(const QStringList& arguments);

/// The same as a map from names to values. A flag's value is its own name, an incomplete option is
/// left out, and a later option replaces an earlier one of the same name.
QNOptions parseQNOptions(const QStringList& arguments);
