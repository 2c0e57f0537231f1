#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>

namespace QN::async {

class qshuttle;

/// A queue of tasks that run on the framework's thread pool:
///
///     QN::async::queue log("com.quarnel.log", true, -254);
///     log.enqueue([] { writeLine(); });
///     log.wait();
///
/// A serial queue runs its tasks one at a time in the order they were appended; a concurrent one
/// starts them in that order, several at once. Tasks may wait, append tasks to any queue and make
/// and destroy queues. A task that waits does not block other queues: if no thread is free, the
/// pool grows, up to the system's limit (half of the user's processes), and shrinks again when it
/// is idle. Exceptions of tasks are printed on standard output, and the next task runs.
///
/// Two warnings. For background queues (see the constructor) the pool does not grow, so no task of
/// any queue may wait for a background queue: it could occupy the thread that it waits for. And a
/// pool that finds no free thread at its limit five times in a row, within about half a second,
/// prints the reason on standard error and ends the process.
///
/// Any thread. At exit, tasks that have not run are dropped, unless their queue is destroyed
/// before. In a child made by fork(2) the pool has no threads: there, queues drop their tasks and
/// never wait, so that the child reaches its exec.
class queue {
  public:
    using Task = std::function<void()>;

    /// `name` is for diagnostics only. A priority below -253 makes it a background queue, for which
    /// the pool grows no further than one thread for each processor (at least 2); other priorities
    /// make no difference. Throws std::system_error when the pool cannot be started.
    queue(std::string name, bool serial, std::int32_t priority);

    /// Resumes the queue and returns when all its tasks have run. Called from a task of the queue
    /// itself, it returns when only that task is running; the remaining tasks run afterwards.
    ~queue();
    queue(const queue&) = delete;
    queue& operator=(const queue&) = delete;

    /// Appends a task. Its captures are released as soon as it has run, before wait() returns.
    /// Throws std::runtime_error "invalid task!" for an empty one, "zombie queue!" once the queue's
    /// destructor has begun.
    void enqueue(Task task);

    /// The same, with a future that becomes ready when the task has run and holds what it threw. In
    /// a child made by fork(2) it is a broken promise.
    [[nodiscard]] std::future<void> enqueueWithFuture(Task task);

    /// Blocks until the queue has drained. Not from a task of the queue itself, which would wait
    /// for itself. Throws std::runtime_error "wait on suspended queue!" when it is suspended.
    void wait();

    /// Whether this is a child made by fork(2) while the pool was running.
    [[nodiscard]] static bool isOrphaned() noexcept;

    /// A suspended queue starts no task until resume() has been called as often as suspend().
    void suspend();
    void resume();

  private:
    void append(Task task, std::unique_ptr<std::promise<void>> promise);
    void drain();

    const std::shared_ptr<qshuttle> shuttle_;
};

} // namespace QN::async
