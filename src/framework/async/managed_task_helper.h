#pragma once

#include <future>
#include <utility>

namespace QN::async {

/// A piece of the manager's work: the registration of a queue or a scheduling pass.
class managed_task_helper {
  public:
    template <typename Work>
    explicit managed_task_helper(Work work) : task_(std::move(work)) {}

    /// Call it once only. Throws what the work throws.
    void run() {
        task_();
        task_.get_future().get();
    }

  private:
    std::packaged_task<void()> task_;
};

} // namespace QN::async
