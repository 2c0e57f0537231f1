#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <cstdint>

namespace platform {

/// Tells whether anything of a window can be seen, so that nothing need be drawn while not: not
/// while it is hidden or minimised, nor while other windows cover it as far as the desktop says so.
/// X11 does without a compositor; with one no covered window is told of it. Wayland's compositors
/// do as they like. In doubt it can be seen. The main thread only.
class WindowVisibility final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// Of a window of its own, which must outlive this.
    explicit WindowVisibility(QWidget& window);
    ~WindowVisibility() override;

    bool isVisible() const noexcept { return isVisible_; }

  Q_SIGNALS:
    /// Before what is to be seen again is drawn.
    void changed(bool isVisible);

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;
    void follow(QWindow* handle);
    void review();

    QWidget& window_;
    QPointer<QWindow> handle_;
    std::uint32_t nativeWindow_ = 0;
    bool wasExposed_ = false; // since the native window has been there
    bool isCovered_ = false;
    bool isVisible_ = true;
};

} // namespace platform
