#include "platform/processes/DetachedProgram.h"

#include <QFile>
#include <QProcess>

#include <algorithm>

namespace platform {

QString startDetached(const QString& program, const QString& messages) {
    QProcess process;
    process.setProgram(program);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(QStringLiteral("/")); // or it would keep a mount busy
    // A program whose messages find no room is better than none.
    const bool hasRoom = !messages.isEmpty() && QFile(messages).open(QIODevice::WriteOnly);
    process.setStandardOutputFile(hasRoom ? messages : QProcess::nullDevice(), QIODevice::Truncate);
    return process.startDetached() ? QString() : process.errorString();
}

QString lastLines(const QString& file, int count) {
    constexpr qint64 most = 8192;
    QFile text(file);
    if (!text.open(QIODevice::ReadOnly) || !text.seek(std::max<qint64>(0, text.size() - most)))
        return {};
    const QString end = QString::fromUtf8(text.read(most)).trimmed();
    return end.section(QLatin1Char('\n'), -count);
}

} // namespace platform
