#pragma once

#include <QDBusMessage>
#include <QString>
#include <QVariantMap>

#include <optional>

/// An error as it goes over the bus.
struct BusError {
    QString name;
    QString text; ///< for people

    static BusError invalid(const QString& text);
    static BusError notControllable(const QString& reason);
};

/// One interface of one object: its properties and methods, and by way of them the standard
/// interface org.freedesktop.DBus.Properties. Main thread only.
class BusInterface {
  public:
    /// Either what a method answers, mostly nothing, or why it does not.
    struct Outcome {
        QVariantList results = {};
        std::optional<BusError> error = std::nullopt;
    };

    explicit BusInterface(QString name) : name_(std::move(name)) {}
    virtual ~BusInterface() = default;
    BusInterface(const BusInterface&) = delete;
    BusInterface& operator=(const BusInterface&) = delete;

    const QString& name() const noexcept { return name_; }

    /// All that can be read, in the types of the bus.
    virtual QVariantMap properties() const = 0;

    /// Sets one of the properties(). `value` is of its type.
    virtual std::optional<BusError> set(const QString& property, const QVariant& value) = 0;

    /// The types of a method's arguments; nothing when there is none of that name.
    virtual std::optional<QString> signature(const QString& method) const = 0;

    /// `arguments` are of that signature.
    virtual Outcome call(const QString& method, const QVariantList& arguments) = 0;

    /// The reply or error for a call of this interface or of its properties.
    QDBusMessage answer(const QDBusMessage& message);

  private:
    QDBusMessage answerProperties(const QDBusMessage& message);
    QDBusMessage setProperty(const QDBusMessage& message);

    const QString name_;
};
