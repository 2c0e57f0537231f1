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
QNOption readDashed(const QStringList& arguments, qsizetype& index) {
    using Form = QNOption::Form;
    const QString& argument = arguments[index];
    const QString key = keyOf(argument);
    const bool isLast = index + 1 >= arguments.size();
    if (!isLast && arguments[index + 1] == QLatin1String("=")) {
        index += 2;
        if (index >= arguments.size())
            return {argument, key, Form::incomplete};
        return {argument, key, Form::valued, valueOf(arguments[index])};
    }
    if (isLast || arguments[index + 1].startsWith(QLatin1Char('-')))
        return {argument, key};
    return {argument, key, Form::valued, valueOf(arguments[++index])};
}

} // namespace

QStringList argumentTexts(int argc, char** argv) {
    QStringList texts;
    for (int i = 0; i < argc; ++i)
        texts.append(QString::fromUtf8(argv[i]));
    return texts;
}

QList<QNOption> readQNOptions(const QStringList& arguments) {
    QList<QNOption> options;
    for (qsizetype index = 1; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const qsizetype equals = argument.indexOf(QLatin1Char('='));
        if (equals >= 0)
            options.append({argument, keyOf(argument.left(equals)), QNOption::Form::valued,
                            valueOf(argument.mid(equals + 1))});
        else if (argument == QLatin1String("--") || !argument.startsWith(QLatin1Char('-')))
            break;
        else
            options.append(readDashed(arguments, index));
    }
    return options;
}

QNOptions parseQNOptions(const QStringList& arguments) {
    QNOptions options;
    for (const QNOption& option : readQNOptions(arguments)) {
        if (option.form != QNOption::Form::incomplete)
            options.insert(option.key,
                           option.form == QNOption::Form::flag ? option.key : option.value);
    }
    return options;
}
