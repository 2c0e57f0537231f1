#pragma once

#include "platform/loop/Timer.h"

#include <cstddef>
#include <functional>

namespace platform {
class RunLoop;
}

/// Limits the log lines about errors of one plug-in: ten a second are written, the others are
/// counted, and their number is reported when the second is over or the plug-in disconnects. The
/// loop's thread only.
class MVCommFaultLog {
  public:
    /// `tellLeftOut` gets a number above 0.
    MVCommFaultLog(platform::RunLoop& loop, std::function<void(std::size_t)> tellLeftOut);

    /// Reports the number that has not been reported yet.
    ~MVCommFaultLog();
    MVCommFaultLog(const MVCommFaultLog&) = delete;
    MVCommFaultLog& operator=(const MVCommFaultLog&) = delete;

    /// Whether the next line may be written. Counts it as written or omitted.
    [[nodiscard]] bool allowsLine();

  private:
    void tell();

    const std::function<void(std::size_t)> tellLeftOut_;
    platform::Timer second_; // begins with its first line
    std::size_t lines_ = 0;  // in this second
};
