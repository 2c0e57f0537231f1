#pragma once

#include <QString>

/// The text that goes with a number, of a length of its own: what is mixed from two states does not
/// fit.
inline QString defaultsContent(qlonglong number) {
    return QString::number(number).repeated(static_cast<qsizetype>(1 + number * 37 % 3000));
}
