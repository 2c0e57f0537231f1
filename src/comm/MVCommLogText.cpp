#include "comm/MVCommLogText.h"

#include <QString>

#include <algorithm>

namespace {

bool needsEscape(QChar character) noexcept {
    const char16_t code = character.unicode();
    return code == u'\n' || code == 0x85 ||      // next line
           (code >= 0x2028 && code <= 0x202E) || // separators, embeddings, overrides
           (code >= 0x2066 && code <= 0x2069);   // isolates
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
