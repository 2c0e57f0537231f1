#include "framework/support/InfoRecord.h"

#include "framework/redaction/Redactor.h"

#include <QXmlStreamWriter>

#include <algorithm>

namespace {

/// Without the characters that XML cannot have.
QString writable(QString text) {
    const auto isForbidden = [](QChar character) {
        const char16_t code = character.unicode();
        return (code < 0x20 && code != '\t' && code != '\n' && code != '\r') || code >= 0xfffe;
    };
    text.removeIf(isForbidden);
    return text;
}

void writeRedactions(QXmlStreamWriter& xml, const Redactor& redactor) {
    xml.writeStartElement(QStringLiteral("redactions"));
    for (std::size_t i = 0; i < redactionKinds; ++i) {
        const auto kind = static_cast<RedactionKind>(i);
        const std::string_view name = wordsOf(kind).name;
        xml.writeTextElement(QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())),
                             QString::number(redactor.count(kind)));
    }
    xml.writeEndElement();
}

} // namespace

QByteArray InfoRecord::xml(const Redactor* redactor) const {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    const auto write = [&xml](const char* name, const QString& value) {
        xml.writeTextElement(QLatin1String(name), writable(value));
    };
    xml.writeStartElement(QStringLiteral("info"));
    write("isCrashReport", isCrashReport ? QStringLiteral("true") : QStringLiteral("false"));
    if (!email.isEmpty())
        write("email", email);
    if (!comment.isEmpty())
        write("comment", comment);
    write("date", QString::number(date.toSecsSinceEpoch()));
    write("product", product);
    write("version", version);
    write("build", build);
    write("buildID", buildId);
    write("buildTimestamp", buildTimestamp);
    if (redactor != nullptr)
        writeRedactions(xml, *redactor);
    xml.writeEndElement();
    xml.writeEndDocument();
    return text.trimmed();
}
