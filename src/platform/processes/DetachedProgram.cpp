#include "platform/processes/DetachedProgram.h"

#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>

namespace platform {

namespace {

QString start(QProcess& process, const QString& program) {
    process.setProgram(program);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setWorkingDirectory(QStringLiteral("/")); // or it would keep a mount busy
    return process.startDetached() ? QString() : process.errorString();
}

} // namespace

QString startDetached(const QString& program, const QString& messages) {
    QProcess process;
    // A program whose messages find no room is better than none.
    const bool hasRoom = !messages.isEmpty() && QFile(messages).open(QIODevice::WriteOnly);
    process.setStandardOutputFile(hasRoom ? messages : QProcess::nullDevice(), QIODevice::Truncate);
    return start(process, program);
}

QString startDetachedWith(const QString& program, const QStringList& variables) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& each : variables)
        environment.insert(each.section(QLatin1Char('='), 0, 0), each.section(QLatin1Char('='), 1));
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(QProcess::nullDevice());
    return start(process, program);
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
