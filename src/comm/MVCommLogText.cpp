#include "comm/MVCommLogText.h"

#include "platform/base/PrintableText.h"

#include <QString>

#include <algorithm>

namespace {

bool needsEscape(QChar character) noexcept {
    return platform::disturbsLine(character.unicode());
}

} // namespace

QString MVCommLogText(const QString& text) {
    if (std::ranges::none_of(text, needsEscape))
        return text;
    QString escaped;
    for (const QChar character : text) {
        if (!needsEscape(character))
            escaped += character;
        else if (character == QLatin1Char('\n'))
            escaped += QLatin1String("\\n");
        else
            escaped += QLatin1String("\\u") + QString::number(character.unicode(), 16);
    }
    return escaped;
}
