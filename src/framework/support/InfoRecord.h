#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

class Redactor;

/// The information record of a support report.
struct InfoRecord {
    bool isCrashReport = false;
    QString email;   ///< empty: left out
    QString comment; ///< the same
    QDateTime date;
    QString product;
    QString version;
    QString build;
    QString buildId;
    QString buildTimestamp;

    /// The record as XML, with how many facts of each kind have been replaced in the report; null
    /// for none.
    [[nodiscard]] QByteArray xml(const Redactor* redactor) const;
};
