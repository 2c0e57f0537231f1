#pragma once

#include <QAbstractNativeEventFilter>
#include <QByteArray>
#include <QMap>
#include <QObject>
#include <QString>

#include <cstdint>

namespace platform {

/// What the settings daemon of an X11 desktop tells all programs (XSETTINGS), as far as it is text.
/// Followed while it runs; when the daemon has gone, what it has said last stays. Where Qt does not
/// draw on X11 nothing is known. The main thread only, with an application object.
class X11Settings final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// By name: "Gtk/DecorationLayout".
    using Texts = QMap<QString, QString>;

    /// Of the display that Qt uses; made on first use, never destroyed.
    static X11Settings& shared();

    /// Asks the X server, which takes a few round trips, as each change takes one.
    X11Settings();
    ~X11Settings() override;

    const Texts& texts() const noexcept { return texts_; }

    /// The texts in what a daemon tells, up to where it makes no sense.
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
