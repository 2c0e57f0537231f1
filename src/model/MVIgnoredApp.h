#pragma once

#include <QObject>
#include <QString>

/// One built-in entry of the ignore list. Its name is fixed; the user can switch it off. Main
/// thread only.
class MVIgnoredApp final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name CONSTANT)
    Q_PROPERTY(bool enabled READ enabled WRITE setEnabled NOTIFY enabledChanged)

  public:
    MVIgnoredApp(QString name, bool enabled);

    const QString& name() const noexcept { return name_; }

    /// Whether the entry ignores its process.
    bool enabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled);

  Q_SIGNALS:
    /// Emitted for real changes only.
    void enabledChanged(bool enabled);

  private:
    const QString name_;
    bool enabled_;
};
