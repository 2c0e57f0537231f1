#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"

#include <vector>

namespace platform {
class RunLoop;
}

/// Collects what is to be drawn anew, so that a burst of changes from many sides becomes one frame,
/// of which there are 60 a second at most. Nothing runs while nothing is asked for. Neither asking
/// nor drawing allocates once all clients have been known. The run loop's thread only.
class FramePacer {
  public:
    class Client {
      public:
        virtual ~Client() = default;

        /// Whatever has to be drawn. May ask for the next frame, and may withdraw anybody.
        virtual void frame() = 0;

      private:
        friend class FramePacer;
        bool isAwaited_ = false;
    };

    explicit FramePacer(platform::RunLoop& loop);

    /// Has client.frame() called once in the next frame, however often it is asked for.
    void request(Client& client);

    /// Before the client goes: it is not called any more.
    void withdraw(Client& client) noexcept;

  private:
    void draw();

    std::vector<Client*> awaited_;
    std::vector<Client*> drawing_; // null: withdrawn meanwhile
    platform::Timer timer_;
    platform::MonotonicClock::time_point earliest_; // of the next frame
};
