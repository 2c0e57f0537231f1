#include "framework/logviewer/LogMoment.h"

#include <QDate>
#include <QTime>

namespace QN::logviewer {

std::optional<LogDocument::Moment> momentOf(const QString& text) {
    const QStringList parts = text.simplified().split(QLatin1Char(' '));
    QTime time = QTime::fromString(parts.last(), QStringLiteral("H:m:s"));
    if (!time.isValid())
        time = QTime::fromString(parts.last(), QStringLiteral("H:m"));
    if (!time.isValid() || parts.size() > 2)
        return std::nullopt;
    LogDocument::Moment moment;
    moment.secondOfDay = static_cast<std::uint32_t>(QTime(0, 0).secsTo(time));
    if (parts.size() == 1)
        return moment;
    const QDate date = QDate::fromString(parts.first(), Qt::ISODate);
    if (!date.isValid())
        return std::nullopt;
    moment.day =
        LogHour{static_cast<std::uint32_t>(date.year()), static_cast<std::uint32_t>(date.month()),
                static_cast<std::uint32_t>(date.day())};
    return moment;
}

} // namespace QN::logviewer
