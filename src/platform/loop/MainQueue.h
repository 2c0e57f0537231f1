#pragma once

namespace platform {

class RunLoop;

/// Serving DispatchQueue::main(). A program uses its main run loop; a test without one calls
/// drainMainQueue(). The serving thread counts as the main thread.

/// While it lives, `loop` runs the blocks of the main queue, on the loop's thread. One at a time.
class MainQueueService {
  public:
    explicit MainQueueService(RunLoop& loop);
    ~MainQueueService();
    MainQueueService(const MainQueueService&) = delete;
    MainQueueService& operator=(const MainQueueService&) = delete;
};

/// Runs all blocks of the main queue, including those that they submit, on the calling thread. Must
/// not be called while a MainQueueService lives, and by one thread at a time.
void drainMainQueue();

} // namespace platform
