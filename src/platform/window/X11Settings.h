#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QString>

#include <cstdint>

namespace platform {

/// The text settings of an X11 desktop's settings daemon (XSETTINGS), kept up to date. If the
/// daemon ends, its last values stay. Empty if Qt does not use X11. Main thread only, with an
/// application object.
class X11Settings final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// By name: "Gtk/DecorationLayout".
    using Texts = QMap<QString, QString>;

    /// Of the display that Qt uses; created on first use, never destroyed.
    static X11Settings& shared();

    /// Reads the settings from the X server, with a few round trips; each change takes one more.
    X11Settings();
    ~X11Settings() override;

    const Texts& texts() const noexcept { return texts_; }

    /// Parses a daemon's data, up to the first error.
    static Texts textsIn(const QByteArray& told);

  Q_SIGNALS:
    void changed();

  private:
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

    bool findDaemon();
    void read();

    std::uint32_t root_ = 0; // 0 without X11
    std::uint32_t selection_ = 0;
    std::uint32_t property_ = 0;
    std::uint32_t manager_ = 0;
    std::uint32_t daemon_ = 0; // its window; 0 without a daemon
    Texts texts_;
};

} // namespace platform
