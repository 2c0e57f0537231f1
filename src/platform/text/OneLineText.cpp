#include "platform/text/OneLineText.h"

#include "platform/base/HarmlessText.h"

#include <algorithm>

namespace platform {

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
    return QString::fromStdString(shownLine(text.toStdString()));
}

Qt::LayoutDirection textDirection(const QString& text) {
    return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

bool isInvisible(const QString& text) {
    return std::ranges::all_of(text, &leavesNoInk);
}

} // namespace platform
