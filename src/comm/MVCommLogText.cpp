#include "comm/MVCommLogText.h"

#include "platform/base/HarmlessText.h"

#include <QString>

QString MVCommLogText(const QString& text) {
    QString escaped;
    for (const QChar character : text) {
        if (!platform::disturbsLine(character.unicode()))
            escaped += character;
        else if (character == QLatin1Char('\n'))
            escaped += QLatin1String("\\n");
        else
            escaped += QLatin1String("\\u") + QString::number(character.unicode(), 16);
    }
    return escaped;
}
