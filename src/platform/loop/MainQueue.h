#pragma once

namespace platform {

class RunLoop;

/// Who serves DispatchQueue::main(). A program has its main run loop do it; a test without one
/// drains by hand. The serving thread counts as the main thread.

/// While it lives, `loop` runs the blocks of the main queue, on the loop's thread. One at a time.
class MainQueueService {
  public:
    explicit MainQueueService(RunLoop& loop);
    ~MainQueueService();
    MainQueueService(const MainQueueService&) = delete;
    MainQueueService& operator=(const MainQueueService&) = delete;
};

/// Runs what the main queue holds, also what these blocks submit, on the calling thread, and
/// returns. Not while a MainQueueService lives, and on one thread at a time.
void drainMainQueue();

} // namespace platform
