#include "framework/application/OptionParser.h"

namespace {

bool isBlank(QChar character) {
    return character.isSpace();
}

QString trimmed(QString text, bool (*isCut)(QChar)) {
    while (!text.isEmpty() && isCut(text.front()))
        text.remove(0, 1);
    while (!text.isEmpty() && isCut(text.back()))
        text.chop(1);
    return text;
}

QString keyOf(const QString& text) {
    return trimmed(text, [](QChar each) { return isBlank(each) || each == QLatin1Char('-'); });
}

QString valueOf(const QString& text) {
    return trimmed(text, &isBlank);
}

/// An option without "=" in it, at `index`, which moves on to the last argument that belongs to it.
void storeDashed(const QStringList& arguments, qsizetype& index, QNOptions& options) {
    const QString key = keyOf(arguments[index]);
    const bool isLast = index + 1 >= arguments.size();
    if (!isLast && arguments[index + 1] == QLatin1String("=")) {
        index += 2;
        if (index < arguments.size())
            options.insert(key, valueOf(arguments[index]));
    } else if (isLast || arguments[index + 1].startsWith(QLatin1Char('-'))) {
        options.insert(key, key);
    } else {
        options.insert(key, valueOf(arguments[++index]));
    }
}

} // namespace

QStringList argumentTexts(int argc, char** argv) {
    QStringList texts;
    for (int i = 0; i < argc; ++i)
        texts.append(QString::fromUtf8(argv[i]));
    return texts;
}

QNOptions parseQNOptions(const QStringList& arguments) {
    QNOptions options;
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        if (equals >= 0)
            options.insert(keyOf(argument.left(equals)), valueOf(argument.mid(equals + 1)));
        else if (argument == QLatin1String("--") || !argument.startsWith(QLatin1Char('-')))
            break;
        else
            storeDashed(arguments, index, options);
    }
    return options;
}
