#include "ui/OneLineText.h"

#include <algorithm>

namespace {

bool isBreak(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
}

bool turnsDirection(QChar character) {
    const char16_t code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

bool leavesNoInk(QChar character) {
    return character.isSpace() || isBreak(character) || character.category() == QChar::Other_Format;
}

} // namespace

QString oneLineText(const QString& text) {
    QString line;
    line.reserve(text.size());
    for (const QChar character : text) {
        if (isBreak(character))
            line += QLatin1Char(' ');
        else if (!turnsDirection(character))
            line += character;
    }
    return line;
}

bool isInvisible(const QString& text) {
    return std::ranges::all_of(text, &leavesNoInk);
}
