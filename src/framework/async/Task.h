#pragma once

#include <functional>
#include <future>
#include <memory>

namespace QN::async {

/// A task and the promise that it fulfils. Most callers do not ask for the promise, and it is not
/// made for them: nobody could tell. An entry without a callable marks a serial queue as busy.
struct TaskEntry {
    std::function<void()> callable;
    std::unique_ptr<std::promise<void>> promise;

    bool isEmpty() const noexcept { return !callable; }
};

} // namespace QN::async
