#include "ui/items/TypedVolume.h"

#include "platform/base/MarkedText.h"
#include "platform/text/Texts.h"

namespace {

bool isWord(const QString& text, const char* english) {
    return text.compare(QLatin1String(english), Qt::CaseInsensitive) == 0 ||
           text.compare(Texts::tr(english), Qt::CaseInsensitive) == 0;
}

/// In ASCII: without blanks before the percent sign, and with the digits of any script.
QString plain(const QString& text) {
    static const QChar minus(0x2212);
    QString plain;
    for (const QChar each : text) {
        if (each.digitValue() >= 0)
            plain += QString::number(each.digitValue());
        else
            plain += each == minus ? QLatin1Char('-') : each;
    }
    if (plain.endsWith(QLatin1Char('%')))
        plain = plain.chopped(1).trimmed();
    return plain;
}

} // namespace

std::optional<TypedVolume> TypedVolume::parse(const QString& text) {
    const QString typed = text.trimmed();
    if (isWord(typed, MARKED_TEXT("Texts", "mute")))
        return TypedVolume{Mute{true}};
    if (isWord(typed, MARKED_TEXT("Texts", "unmute")))
        return TypedVolume{Mute{false}};
    const auto change = VolumeChange::parse(plain(typed).toStdString());
    return change ? std::optional(TypedVolume{*change}) : std::nullopt;
}
