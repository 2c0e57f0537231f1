#include "framework/support/SystemProfile.h"

#include "framework/support/QNSystemInformation.h"
#include "framework/support/SoundQuirks.h"

#include "platform/bundle/Bundle.h"
#include "platform/processes/MachineFacts.h"
#include "platform/processes/SystemFacts.h"
#include "platform/processes/ToolRun.h"
#include "platform/text/ByteCount.h"
#include "platform/text/Format.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

using platform::formatted;

namespace {

QJsonObject infoOf(const QJsonValue& object) {
    return object[QLatin1String("info")].toObject();
}

bool tellsWhatIsPlayed(const QString& property) {
    return property.startsWith(QLatin1String("media.")) &&
           property != QLatin1String("media.class") && property != QLatin1String("media.role") &&
           property != QLatin1String("media.type") && property != QLatin1String("media.category");
}

/// The profile that a device has chosen; empty if there is none.
QString profileOf(const QJsonObject& info) {
    return info[QLatin1String("params")][QLatin1String("Profile")][0][QLatin1String("description")]
        .toString();
}

void writeObject(QXmlStreamWriter& xml, const QJsonValue& object) {
    const QJsonObject properties = infoOf(object)[QLatin1String("props")].toObject();
    if (properties.isEmpty())
        return;
    xml.writeStartElement(QStringLiteral("object"));
    xml.writeAttribute(QStringLiteral("id"), QString::number(object[QLatin1String("id")].toInt()));
    xml.writeAttribute(QStringLiteral("type"), object[QLatin1String("type")].toString());
    for (auto one = properties.begin(); one != properties.end(); ++one) {
        if (tellsWhatIsPlayed(one.key()))
            continue;
        xml.writeStartElement(QStringLiteral("property"));
        xml.writeAttribute(QStringLiteral("name"), one.key());
        xml.writeCharacters(one.value().toVariant().toString());
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

/// Copies a document into another one, as far as it can be read.
void writeDocument(QXmlStreamWriter& xml, const QByteArray& document) {
    QXmlStreamReader reader(document);
    int depth = 0;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement())
            ++depth;
        if (reader.isStartElement() || reader.isEndElement() ||
            (reader.isCharacters() && depth > 0 && !reader.isWhitespace()))
            xml.writeCurrentToken(reader);
        if (reader.isEndElement())
            --depth;
    }
    for (; depth > 0; --depth)
        xml.writeEndElement();
}

} // namespace

QByteArray SystemProfile::outputOf(const std::vector<std::string>& arguments, bool isLong) const {
    platform::ToolCall call;
    call.arguments = arguments;
    call.timeLimit = isLong ? tools_.fullProfileTime : tools_.toolTime;
    const auto result = platform::runTool(call);
    if (!result || result->isLate || result->status != 0)
        return {};
    return QByteArray::fromStdString(result->output);
}

QString SystemProfile::versionOf(const std::string& program) const {
    const QString output = QString::fromUtf8(outputOf({program, "--version"})).trimmed();
    return output.section(QLatin1Char('\n'), -1).section(QLatin1Char(' '), -1);
}

QStringList SystemProfile::soundDevices() const {
    QStringList devices;
    const QJsonDocument dump = QJsonDocument::fromJson(outputOf({tools_.pwDump}));
    for (const QJsonValue object : dump.array()) {
        const QJsonObject info = infoOf(object);
        const QJsonObject properties = info[QLatin1String("props")].toObject();
        if (properties[QLatin1String("media.class")].toString() != QLatin1String("Audio/Device"))
            continue;
        const QString profile = profileOf(info);
        devices.append(properties[QLatin1String("device.description")].toString() +
                       (profile.isEmpty() ? QString() : QStringLiteral(": ") + profile));
    }
    return devices;
}

QList<SystemProfile::Fact> SystemProfile::facts() const {
    const platform::Bundle& bundle = platform::Bundle::main();
    const auto text = [](const std::string& value) { return QString::fromStdString(value); };
    QStringList cards;
    for (const std::string& card : platform::soundCards(tools_.root))
        cards.append(text(card));
    const QString pipewire = versionOf(tools_.pipewire);
    const QString wireplumber = versionOf(tools_.wireplumber);
    QList<Fact> facts{
        {"Tonvale", text(bundle.version() + " " + bundle.text("QNBuildIdentifier")).trimmed()},
        {"System", text(platform::distributionName(tools_.root))},
        {"Kernel", text(platform::productBuild())},
        {"Desktop", qEnvironmentVariable("XDG_CURRENT_DESKTOP")},
        {"Session", qEnvironmentVariable("XDG_SESSION_TYPE")},
        {"Machine", QNSystemInformation::machineDescription(tools_.root)},
        {"Processor", QNSystemInformation::cpuDescription(tools_.root)},
        {"Memory", platform::binaryByteCount(platform::physicalMemory(tools_.root))},
        {"Graphics",
         QNSystemInformation::graphicsDescriptions(tools_.root).join(QStringLiteral("; "))},
        {"Restart", QNSystemInformation::lastRestartDescription(tools_.root)},
        {"Qt", QString::fromLatin1(qVersion())},
        {"PipeWire", pipewire},
        {"WirePlumber", wireplumber},
        {"Sound cards", cards.join(QStringLiteral("; "))},
        {"Sound devices", soundDevices().join(QStringLiteral("; "))},
    };
    for (const QString& quirk : soundQuirks(pipewire, wireplumber))
        facts.append({"Known quirk", quirk});
    return facts;
}

QString SystemProfile::brief() const {
    QString text;
    for (const Fact& fact : facts()) {
        if (!fact.value.isEmpty())
            text += formatted(QStringLiteral("%-14s %@\n"), fact.name, fact.value);
    }
    const QByteArray status = outputOf({tools_.wpctl, "status"});
    return text + QLatin1Char('\n') + QString::fromUtf8(status);
}

QString SystemProfile::full() const {
    QString text;
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("systemProfile"));
    xml.writeStartElement(QStringLiteral("facts"));
    for (const Fact& fact : facts()) {
        xml.writeStartElement(QStringLiteral("fact"));
        xml.writeAttribute(QStringLiteral("name"), QLatin1String(fact.name));
        xml.writeCharacters(fact.value);
        xml.writeEndElement();
    }
    for (const auto& [name, value] : QNSystemInformation::memoryStatistics(tools_.root)) {
        xml.writeStartElement(QStringLiteral("memory"));
        xml.writeAttribute(QStringLiteral("name"), QString::fromStdString(name));
        xml.writeCharacters(QString::number(value));
        xml.writeEndElement();
    }
    xml.writeEndElement();
    xml.writeTextElement(QStringLiteral("soundStatus"),
                         QString::fromUtf8(outputOf({tools_.wpctl, "status"})));
    xml.writeStartElement(QStringLiteral("hardware"));
    writeDocument(xml, outputOf({tools_.lshw, "-xml"}, true));
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("soundObjects"));
    const QJsonDocument dump = QJsonDocument::fromJson(outputOf({tools_.pwDump}, true));
    for (const QJsonValue object : dump.array())
        writeObject(xml, object);
    xml.writeEndElement();
    xml.writeTextElement(
        QStringLiteral("soundServices"),
        QString::fromUtf8(
            outputOf({tools_.systemctl, "--user", "--no-pager", "show", "--property",
                      "Id,ActiveState,SubState,Result,NRestarts", "pipewire.service",
                      "pipewire-pulse.service", "wireplumber.service", "tonvale-plugin.service"})));
    xml.writeEndElement();
    xml.writeEndDocument();
    return text;
}
