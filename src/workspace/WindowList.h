#pragma once

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <functional>
#include <set>
#include <sys/types.h>

/// The windows of an X11 desktop, as its window manager lists them. Where Qt does not draw on X11
/// there are none. The main thread only, with an application object.
class WindowList final : private QAbstractNativeEventFilter {
  public:
    /// `changed` is called when windows have come or gone.
    explicit WindowList(std::function<void()> changed);
    ~WindowList() override;
    WindowList(const WindowList&) = delete;
    WindowList& operator=(const WindowList&) = delete;

    /// The processes that say that the windows are theirs. Asks the X server, which takes two round
    /// trips.
    std::set<pid_t> owners() const;

  private:
    bool nativeEventFilter(const QByteArray& kind, void* message, qintptr* result) override;

    const std::function<void()> changed_;
    std::uint32_t root_ = 0; // 0 without X11
    std::uint32_t clientList_ = 0;
    std::uint32_t windowProcess_ = 0;
};
