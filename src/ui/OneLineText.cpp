#include "ui/OneLineText.h"

#include "platform/text/PrintableText.h"

#include <algorithm>

namespace {

bool isBreak(QChar character) {
    const QChar::Category category = character.category();
    return category == QChar::Other_Control || category == QChar::Separator_Line ||
           category == QChar::Separator_Paragraph;
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
        else if (!platform::turnsDirection(character.unicode()))
            line += character;
    }
    return line;
}

Qt::LayoutDirection directionOf(const QString& text) {
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

bool isInvisible(const QString& text) {
    return std::ranges::all_of(text, &leavesNoInk);
}
