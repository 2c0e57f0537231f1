#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"

#include <vector>

namespace platform {
class RunLoop;
}

/// Collects repaint requests, so that a burst of changes becomes one frame, at most 60 times a
/// second. Nothing runs without requests. Neither requesting nor drawing allocates once all clients
/// have made a request. The run loop's thread only.
class FramePacer {
  public:
    class Client {
      public:
        virtual ~Client() = default;

        /// Draws the changes. May request the next frame, and may withdraw any client.
        virtual void frame() = 0;

      private:
        friend class FramePacer;
        bool isAwaited_ = false;
    };

    explicit FramePacer(platform::RunLoop& loop);

    /// Calls client.frame() once in the next frame, however often it is requested.
    void request(Client& client);

    /// Call it before the client is destroyed: it is not called any more.
    void withdraw(Client& client) noexcept;

  private:
    void draw();

    std::vector<Client*> awaited_;
    std::vector<Client*> drawing_; // null: withdrawn meanwhile
    platform::Timer timer_;
    platform::MonotonicClock::time_point earliest_; // of the next frame
};
