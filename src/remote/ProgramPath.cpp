#include "remote/ProgramPath.h"

QString ProgramPath::lastPart(const QString& processName) {
    const auto stands = [](char byte) {
        return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
               (byte >= 'a' && byte <= 'z');
    };
    QByteArray part;
    for (const char byte : processName.toUtf8())
        part += stands(byte) ? QByteArray(1, byte) : '_' + QByteArray(1, byte).toHex();
    return part.isEmpty() ? QStringLiteral("_") : QString::fromLatin1(part);
}

QString ProgramPath::of(const QString& processName) {
    return programs + QLatin1Char('/') + lastPart(processName);
}
