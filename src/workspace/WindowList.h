#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>
#include <set>
#include <sys/types.h>

/// The windows of an X11 desktop, from its window manager. Empty if Qt does not use X11. Main
/// thread only, with an application object.
class WindowList final : private QAbstractNativeEventFilter {
  public:
    /// `changed` is called when windows have been added or removed.
    explicit WindowList(std::function<void()> changed);
    ~WindowList() override;
    WindowList(const WindowList&) = delete;
    WindowList& operator=(const WindowList&) = delete;

    /// The processes of the windows, according to their properties. Takes two round trips to the X
    /// server.
    [[nodiscard]] std::set<pid_t> owners() const;

  private:
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

    const std::function<void()> changed_;
    std::uint32_t root_ = 0; // 0 without X11
    std::uint32_t clientList_ = 0;
    std::uint32_t windowProcess_ = 0;
};
