#include "framework/logviewer/QNLogEntry.h"

#include "framework/log/qnlog.h"
#include "platform/text/ByteCount.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <utility>

QNLogEntry::QNLogEntry(QN::logviewer::LogRecord record, std::uint64_t leftOut)
    : record_(std::move(record)), leftOut_(leftOut) {}

QDateTime QNLogEntry::date() const {
    return QDateTime::fromSecsSinceEpoch(record_.time, Qt::UTC);
}

QString QNLogEntry::message() const {
    const QString text = QString::fromStdString(record_.text);
    if (leftOut_ == 0)
        return text;
    return text + QLatin1Char('\n') +
           platform::formatted(Texts::tr("(%@ left out here; copying takes the whole message)"),
                               platform::binaryByteCount(leftOut_));
}

QString nameOfLogLevel(std::uint32_t level) {
    switch (level) {
    case qnlog_critical:
        return Texts::tr("Critical");
    case qnlog_error:
        return Texts::tr("Error");
    case qnlog_warning:
        return Texts::tr("Warning");
    case qnlog_information:
        return Texts::tr("Information");
    case qnlog_user:
        return Texts::tr("User action");
    case qnlog_verbose:
        return Texts::tr("Verbose");
    case qnlog_debug:
        return Texts::tr("Debug");
    case 16:
        return Texts::tr("Trace");
    default:
        return {};
    }
}
