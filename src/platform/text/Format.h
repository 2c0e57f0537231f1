#pragma once

#include <QString>

#include <array>
#include <concepts>
#include <span>
#include <string>
#include <variant>

namespace platform {

/// Formatting of texts. Any thread.

/// An argument of a format: a text or a number. C strings are UTF-8; a null one reads "(null)".
class FormatArgument {
  public:
    using Value = std::variant<QString, qint64, quint64, double>;

    FormatArgument(const QString& text) : value_(text) {}
    FormatArgument(const std::string& text) : value_(QString::fromStdString(text)) {}
    FormatArgument(const char* text)
        : value_(text != nullptr ? QString::fromUtf8(text) : QStringLiteral("(null)")) {}
    FormatArgument(std::signed_integral auto number) : value_(static_cast<qint64>(number)) {}
    FormatArgument(std::unsigned_integral auto number) : value_(static_cast<quint64>(number)) {}
    FormatArgument(std::floating_point auto number) : value_(static_cast<double>(number)) {}

    [[nodiscard]] const Value& value() const noexcept { return value_; }

  private:
    Value value_;
};

/// Fills the directives of `format` with the arguments in order, or the one whose number, from 1,
/// the directive names: "%2$@".
///
///     %@ %s           a text, or a number as it stands
///     %d %i %u        a whole number, with the lengths l, ll and z or none
///     %x              the same in hexadecimal
///     %f %.1f         a number with 6 decimals or as many as it says
///     %c              the character of that Unicode number
///     %%              a percent sign
///
/// The flags '-', '+' and '0' and a width of up to 99 act as in printf(3). The argument's own type
/// counts: %d of a large unsigned number prints that number, %d of a text prints the text. A
/// directive that is not known or has no argument stays as it stands. Digits are those of C
/// whatever the locale.
QString formatArguments(const QString& format, std::span<const FormatArgument> arguments);

/// The same with the arguments at hand: formatted(u"%@ is %.1f"_qs, name, level).
template <typename... A>
QString formatted(const QString& format, const A&... arguments) {
    const std::array<FormatArgument, sizeof...(A)> values{FormatArgument(arguments)...};
    return formatArguments(format, values);
}

} // namespace platform
