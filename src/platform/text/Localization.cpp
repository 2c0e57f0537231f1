#include "platform/text/Localization.h"

#include <QChar>
#include <QCoreApplication>
#include <QLocale>
#include <QStringView>

#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <utility>

namespace platform {

namespace {

struct Directive {
    std::size_t position = 0; // from 1; 0: the next argument
    bool leftAligned = false;
    bool signShown = false;
    bool zeroPadded = false;
    qsizetype width = 0;
    std::optional<int> precision;
    bool wide = false; // a length other than int's
    char16_t conversion = u'\0';
};

/// Reads one directive, from behind its percent sign.
class DirectiveReader {
  public:
    DirectiveReader(QStringView format, qsizetype start) : format_(format), place_(start) {}

    /// Behind the directive after read().
    qsizetype place() const noexcept { return place_; }

    std::optional<Directive> read() {
        Directive directive;
        readPosition(directive);
        readFlags(directive);
        directive.width = readNumber().value_or(0);
        if (skip(u'.'))
            directive.precision = readNumber().value_or(0);
        readLength(directive);
        directive.conversion = current();
        ++place_;
        return isKnown(directive) ? std::optional(directive) : std::nullopt;
    }

  private:
    char16_t current() const {
        return place_ < format_.size() ? format_.at(place_).unicode() : u'\0';
    }

    bool skip(char16_t character) {
        const bool found = current() == character;
        place_ += found ? 1 : 0;
        return found;
    }

    /// At most two digits: nothing that a text for people needs is longer.
    std::optional<int> readNumber() {
        std::optional<int> number;
        for (int i = 0; i < 2 && current() >= u'0' && current() <= u'9'; ++i, ++place_)
            number = number.value_or(0) * 10 + (current() - u'0');
        return number;
    }

    void readPosition(Directive& directive) {
        const qsizetype before = place_;
        const auto number = readNumber();
        if (number && *number > 0 && skip(u'$'))
            directive.position = static_cast<std::size_t>(*number);
        else
            place_ = before;
    }

    void readFlags(Directive& directive) {
        for (bool flag = true; flag;) {
            flag = false;
            for (const auto& [character, member] :
                 {std::pair(u'-', &Directive::leftAligned), std::pair(u'+', &Directive::signShown),
                  std::pair(u'0', &Directive::zeroPadded)}) {
                if (skip(character))
                    flag = directive.*member = true;
            }
        }
    }

    void readLength(Directive& directive) {
        directive.wide = skip(u'z') || skip(u'l');
        if (directive.wide && format_.at(place_ - 1) == u'l')
            skip(u'l');
    }

    static bool isKnown(const Directive& directive) {
        switch (directive.conversion) {
        case u'd':
        case u'i':
        case u'u':
        case u'x':
            return !directive.precision;
        case u'@':
        case u's':
        case u'c':
            return !directive.precision && !directive.wide;
        case u'f':
            return !directive.wide;
        default:
            return false;
        }
    }

    const QStringView format_;
    qsizetype place_;
};

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

QString fixed(double number, const Directive& directive) {
    constexpr int usualDecimals = 6;
    return QString::number(number, 'f', directive.precision.value_or(usualDecimals));
}

QString numberText(std::integral auto number, const Directive& directive) {
    switch (directive.conversion) {
    case u'x':
        return hexadecimal(static_cast<quint64>(number), directive.wide);
    case u'c':
        return character(static_cast<quint64>(number));
    case u'f':
        return fixed(static_cast<double>(number), directive);
    default:
        return QString::number(number);
    }
}

QString numberText(double number, const Directive& directive) {
    switch (directive.conversion) {
    case u'f':
        return fixed(number, directive);
    case u'@':
    case u's':
        return QString::number(number, 'g', QLocale::FloatingPointShortest);
    default:
        return QString::number(number, 'f', 0);
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

QString localized(const QString& key, const char* table) {
    return QCoreApplication::translate(table, key.toUtf8().constData());
}

QString formatArguments(const QString& format, std::span<const FormatArgument> arguments) {
    QString result;
    result.reserve(expectedSize(format, arguments));
    std::size_t next = 1;
    qsizetype place = 0;
    for (qsizetype percent = format.indexOf(u'%'); percent >= 0;
         percent = format.indexOf(u'%', place)) {
        result += QStringView(format).mid(place, percent - place);
        place = percent + 1;
        DirectiveReader reader(format, place);
        const auto directive = reader.read();
        const std::size_t position =
            directive && directive->position != 0 ? directive->position : next;
        if (directive && position <= arguments.size()) {
            result += filled(arguments[position - 1], *directive);
            place = reader.place();
            next += directive->position == 0 ? 1 : 0;
        } else {
            result += u'%';
            place += place < format.size() && format.at(place) == u'%' ? 1 : 0;
        }
    }
    return result += QStringView(format).mid(place);
}

} // namespace platform
