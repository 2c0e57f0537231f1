#pragma once

#include <QDBusMessage>
#include <QString>
#include <QVariantMap>

#include <optional>

/// A D-Bus error.
struct BusError {
    QString name;
    QString text; ///< text for the user

    static BusError invalid(const QString& text);
    static BusError notControllable(const QString& reason);
};

/// One interface of one object: its properties and methods, and based on them the standard
/// interface org.freedesktop.DBus.Properties. Main thread only.
class BusInterface {
  public:
    /// The results of a method, often none, or an error.
    struct Outcome {
        QVariantList results = {};
        std::optional<BusError> error = std::nullopt;
    };

    explicit BusInterface(QString name) : name_(std::move(name)) {}
    virtual ~BusInterface() = default;
    BusInterface(const BusInterface&) = delete;
    BusInterface& operator=(const BusInterface&) = delete;

    [[nodiscard]] const QString& name() const noexcept { return name_; }

    /// All readable properties, in the types of the bus.
    [[nodiscard]] virtual QVariantMap properties() const = 0;

    /// Sets one of the properties(). `value` is of its type.
    [[nodiscard]] virtual std::optional<BusError> set(const QString& property,
                                                      const QVariant& value) = 0;

    /// The signature of a method's arguments; nothing if there is no such method.
    [[nodiscard]] virtual std::optional<QString> signature(const QString& method) const = 0;

    /// `arguments` are of that signature.
    virtual Outcome call(const QString& method, const QVariantList& arguments) = 0;

    /// Handles a call of this interface or of its properties, and returns the reply or error.
    QDBusMessage answer(const QDBusMessage& message);

  private:
    QDBusMessage answerProperties(const QDBusMessage& message);
    QDBusMessage setProperty(const QDBusMessage& message);

    const QString name_;
};
