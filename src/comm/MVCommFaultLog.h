#pragma once

#include "platform/loop/Timer.h"

#include <cstddef>
#include <functional>

namespace platform {
class RunLoop;
}

/// Thins out the lines that the faults of one plug-in cause: ten a second are written, the others
/// are counted, and their number is told when the second is over or the plug-in has gone. The
/// loop's thread only.
class MVCommFaultLog {
  public:
    /// `tellLeftOut` gets a number above 0.
    MVCommFaultLog(platform::RunLoop& loop, std::function<void(std::size_t)> tellLeftOut);

    /// Tells what has not been told.
    ~MVCommFaultLog();
    MVCommFaultLog(const MVCommFaultLog&) = delete;
    MVCommFaultLog& operator=(const MVCommFaultLog&) = delete;

    /// Whether the next line may be written; it counts as written or left out then.
    [[nodiscard]] bool allowsLine();

  private:
    void tell();

    const std::function<void(std::size_t)> tellLeftOut_;
    platform::Timer second_; // begins with its first line
    std::size_t lines_ = 0;  // in this second
};
