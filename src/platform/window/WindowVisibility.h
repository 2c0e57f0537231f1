#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <cstdint>

namespace platform {

/// Whether any part of a window is visible, so that drawing can stop while it is not: while it is
/// hidden or minimised, or covered by other windows if the desktop reports that. X11 reports it
/// without a compositor only; Wayland compositors differ. If in doubt, the window counts as
/// visible. Main thread only.
class WindowVisibility final : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

  public:
    /// `window` is a top-level window and must outlive this.
    explicit WindowVisibility(QWidget& window);
    ~WindowVisibility() override;

    bool isVisible() const noexcept { return isVisible_; }

  Q_SIGNALS:
    /// Emitted before a window that has become visible is drawn.
    void changed(bool isVisible);

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;
    void follow(QWindow* handle);
    void review();

    QWidget& window_;
    QPointer<QWindow> handle_;
    std::uint32_t nativeWindow_ = 0;
    bool wasExposed_ = false; // since the native window was created
    bool isCovered_ = false;
    bool isVisible_ = true;
};

} // namespace platform
