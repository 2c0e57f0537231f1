#include "remote/BusInterface.h"

#include <QDBusError>
#include <QDBusVariant>

namespace {

const QString propertiesName = QStringLiteral("org.freedesktop.DBus.Properties");

QDBusMessage errorReply(const QDBusMessage& call, const BusError& error) {
    return call.createErrorReply(error.name, error.text);
}

QDBusMessage unknownMethod(const QDBusMessage& call) {
    return call.createErrorReply(QDBusError::UnknownMethod,
                                 QStringLiteral("There is no such method"));
}

} // namespace

BusError BusError::invalid(const QString& text) {
    return {QDBusError::errorString(QDBusError::InvalidArgs), text};
}

BusError BusError::notControllable(const QString& reason) {
    return {QStringLiteral("com.quarnel.Tonvale.Error.NotControllable"), reason};
}

QDBusMessage BusInterface::answer(const QDBusMessage& message) {
    const bool isUnaddressed = message.interface().isEmpty();
    if (message.interface() == name_ || isUnaddressed) {
        const auto wanted = signature(message.member());
        if (wanted && *wanted == message.signature()) {
            const Outcome outcome = call(message.member(), message.arguments());
            return outcome.error ? errorReply(message, *outcome.error)
                                 : message.createReply(outcome.results);
        }
        if (wanted)
            return errorReply(message, BusError::invalid(QStringLiteral("Wrong arguments")));
        if (!isUnaddressed)
            return unknownMethod(message);
    }
    if (message.interface() == propertiesName || isUnaddressed)
        return answerProperties(message);
    return message.createErrorReply(QDBusError::UnknownInterface,
                                    QStringLiteral("There is no such interface"));
}

QDBusMessage BusInterface::answerProperties(const QDBusMessage& message) {
    const QString& member = message.member();
    const QString types = message.signature();
    const bool isGet = member == QLatin1String("Get") && types == QLatin1String("ss");
    const bool isGetAll = member == QLatin1String("GetAll") && types == QLatin1String("s");
    const bool isSet = member == QLatin1String("Set") && types == QLatin1String("ssv");
    if (!isGet && !isGetAll && !isSet)
        return unknownMethod(message);
    const QVariantList arguments = message.arguments();
    if (const QString interface = arguments[0].toString();
        interface != name_ && !interface.isEmpty())
        return message.createErrorReply(QDBusError::UnknownInterface,
                                        QStringLiteral("There is no such interface"));
    if (isGetAll)
        return message.createReply(QVariant(properties()));
    if (isSet)
        return setProperty(message);
    const QVariant value = properties().value(arguments[1].toString());
    return value.isValid() ? message.createReply(QVariant::fromValue(QDBusVariant(value)))
                           : message.createErrorReply(QDBusError::UnknownProperty,
                                                      QStringLiteral("There is no such property"));
}

QDBusMessage BusInterface::setProperty(const QDBusMessage& message) {
    const QVariantList arguments = message.arguments();
    const QString property = arguments[1].toString();
    const QVariant value = qvariant_cast<QDBusVariant>(arguments[2]).variant();
    const QVariant present = properties().value(property);
    if (!present.isValid())
        return message.createErrorReply(QDBusError::UnknownProperty,
                                        QStringLiteral("There is no such property"));
    if (present.typeId() != value.typeId())
        return errorReply(message, BusError::invalid(QStringLiteral("Wrong type")));
    const auto error = set(property, value);
    return error ? errorReply(message, *error) : message.createReply();
}
