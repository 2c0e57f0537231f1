#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

class RunLoop;

/// Makes a run loop call a handler whenever a descriptor is ready. The descriptor is not owned and
/// must stay open while the source lives. Destroying the source ends the watch at once, also from
/// inside a handler. The loop's thread only.
class RunLoopSource {
  public:
    enum Interest : std::uint32_t { nothing = 0, reading = 1, writing = 2 };

    /// Called on the loop's thread, each time in a copy, which should be cheap to make. A
    /// descriptor stays ready until the handler has dealt with what made it so; errors and hang-ups
    /// count as ready for everything. A nested loop may have handled it already, so a handler must
    /// accept finding nothing.
    using Handler = std::function<void()>;

    /// Null, with errno set, if the kernel refuses the descriptor.
    [[nodiscard]] static std::unique_ptr<RunLoopSource>
    create(RunLoop& loop, int descriptor, std::uint32_t interest, Handler handler);
    ~RunLoopSource();
    RunLoopSource(const RunLoopSource&) = delete;
    RunLoopSource& operator=(const RunLoopSource&) = delete;

    /// Changes what is waited for. False, with errno set, when the kernel refuses.
    bool setInterest(std::uint32_t interest) noexcept;

  private:
    friend class RunLoop;
    RunLoopSource(RunLoop& loop, int descriptor, Handler handler);

    RunLoop& loop_;
    const int descriptor_;
    const Handler handler_;
    bool watching_ = false;
};

} // namespace platform
