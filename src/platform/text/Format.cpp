#include "platform/text/Format.h"

#include <QChar>
#include <QLocale>
#include <QStringView>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

namespace platform {

namespace {

struct Directive {
    int position = 0; // from 1; 0: the next argument
    bool leftAligned = false;
    bool signShown = false;
    bool zeroPadded = false;
    int width = 0;
    std::optional<int> precision;
    bool wide = false; // a length other than int's
    char16_t conversion = u'\0';
};

/// Takes the next character of a text if it is one of those wanted; 0 otherwise.
char16_t take(QStringView& text, QStringView wanted) {
    if (text.isEmpty() || std::ranges::find(wanted, text.front()) == wanted.end())
        return u'\0';
    const char16_t taken = text.front().unicode();
    text = text.mid(1);
    return taken;
}

/// At most two digits, which is enough for texts that users read.
std::optional<int> takeNumber(QStringView& text) {
    std::optional<int> number;
    for (int i = 0; i < 2; ++i) {
        if (const char16_t digit = take(text, u"0123456789"))
            number = number.value_or(0) * 10 + (digit - u'0');
    }
    return number;
}

/// Takes one directive, from behind its percent sign. Nothing where none is known.
std::optional<Directive> takeDirective(QStringView& text) {
    Directive directive;
    QStringView ahead = text;
    const int position = takeNumber(ahead).value_or(0);
    if (position > 0 && take(ahead, u"$")) {
        directive.position = position;
        text = ahead;
    }
    while (const char16_t flag = take(text, u"-+0"))
        (flag == u'-'   ? directive.leftAligned
         : flag == u'+' ? directive.signShown
                        : directive.zeroPadded) = true;
    directive.width = takeNumber(text).value_or(0);
    if (take(text, u"."))
        directive.precision = takeNumber(text).value_or(0);
    const char16_t length = take(text, u"zl");
    if (length == u'l')
        take(text, u"l");
    directive.wide = length != u'\0';
    const QStringView known = !directive.wide && !directive.precision ? u"diuxsc@f"
                              : !directive.precision                  ? u"diux"
                              : !directive.wide                       ? u"f"
                                                                      : u"";
    directive.conversion = take(text, known);
    return directive.conversion != u'\0' ? std::optional(directive) : std::nullopt;
}

QString character(quint64 number) {
    auto code = static_cast<char32_t>(number);
    if (number > QChar::LastValidCodePoint || QChar::isSurrogate(code))
        code = QChar::ReplacementCharacter;
    return QString::fromUcs4(&code, 1);
}

/// printf's %x of a negative int has the digits of an int.
QString hexadecimal(quint64 number, bool wide) {
    const auto asSigned = static_cast<qint64>(number);
    if (!wide && asSigned < 0 && asSigned >= std::numeric_limits<std::int32_t>::min())
        number &= std::numeric_limits<std::uint32_t>::max();
    return QString::number(number, 16);
}

QString numberText(double number, const Directive& directive) {
    constexpr int usualDecimals = 6;
    switch (directive.conversion) {
    case u'f':
        return QString::number(number, 'f', directive.precision.value_or(usualDecimals));
    case u'@':
    case u's':
        return QString::number(number, 'g', QLocale::FloatingPointShortest);
    default:
        return QString::number(number, 'f', 0);
    }
}

QString numberText(std::integral auto number, const Directive& directive) {
    switch (directive.conversion) {
    case u'x':
        return hexadecimal(static_cast<quint64>(number), directive.wide);
    case u'c':
        return character(static_cast<quint64>(number));
    case u'f':
        return numberText(static_cast<double>(number), directive);
    default:
        return QString::number(number);
    }
}

QString numberText(const QString& text, const Directive&) {
    return text;
}

QString padded(QString text, const Directive& directive, bool isNumber) {
    if (text.size() >= directive.width)
        return text;
    if (directive.leftAligned)
        return text.leftJustified(directive.width);
    if (!directive.zeroPadded || !isNumber)
        return text.rightJustified(directive.width);
    const qsizetype behindSign = text.startsWith(u'-') || text.startsWith(u'+') ? 1 : 0;
    return text.insert(behindSign, QString(directive.width - text.size(), u'0'));
}

QString filled(const FormatArgument& argument, const Directive& directive) {
    return std::visit(
        [&](const auto& value) {
            constexpr bool isText = std::is_same_v<std::decay_t<decltype(value)>, QString>;
            const bool isNumber = !isText && directive.conversion != u'c';
            QString text = numberText(value, directive);
            if (isNumber && directive.signShown && !text.startsWith(u'-') &&
                directive.conversion != u'x')
                text.prepend(u'+');
            return padded(std::move(text), directive, isNumber);
        },
        argument.value());
}

/// Enough for most, so that the text need not move while it grows.
qsizetype expectedSize(const QString& format, std::span<const FormatArgument> arguments) {
    constexpr qsizetype usualDigits = 8;
    qsizetype size = format.size();
    for (const FormatArgument& argument : arguments) {
        const auto* const text = std::get_if<QString>(&argument.value());
        size += text != nullptr ? text->size() : usualDigits;
    }
    return size;
}

} // namespace

QString formatArguments(const QString& format, std::span<const FormatArgument> arguments) {
    QString result;
    result.reserve(expectedSize(format, arguments));
    int next = 1;
    QStringView rest = format;
    for (qsizetype percent = rest.indexOf(u'%'); percent >= 0; percent = rest.indexOf(u'%')) {
        result += rest.first(percent);
        rest = rest.mid(percent + 1);
        QStringView behind = rest;
        const auto directive = takeDirective(behind);
        const int position = !directive ? 0 : directive->position != 0 ? directive->position : next;
        if (position > 0 && static_cast<std::size_t>(position) <= arguments.size()) {
            result += filled(arguments[static_cast<std::size_t>(position) - 1], *directive);
            rest = behind;
            next += directive->position == 0 ? 1 : 0;
        } else {
            result += u'%';
            take(rest, u"%");
        }
    }
    return result += rest;
}

} // namespace platform
