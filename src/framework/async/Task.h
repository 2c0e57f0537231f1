#pragma once

#include <functional>
#include <future>
#include <memory>

namespace QN::async {

/// A task and its promise. The promise is only created for callers that ask for a future. An entry
/// without a callable marks a serial queue as busy.
struct TaskEntry {
    std::function<void()> callable;
    std::unique_ptr<std::promise<void>> promise;

    [[nodiscard]] bool isEmpty() const noexcept { return !callable; }
};

} // namespace QN::async
