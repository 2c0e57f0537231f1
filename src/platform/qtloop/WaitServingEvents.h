#pragma once

#include <functional>

namespace platform {

/// Runs `work` on a thread of its own and returns when it is over, or throws what it has thrown.
/// Meanwhile the calling thread serves events: windows paint, sockets are served, and handlers run,
/// which must not destroy what the caller uses. If the program is told to quit meanwhile, the rest
/// of the wait serves no events, and begins with a call of `hurry`, which may be null. Throws
/// std::system_error if there is no thread left. Main thread, with an application object.
void waitServingEvents(const std::function<void()>& work,
                       const std::function<void()>& hurry = nullptr);

} // namespace platform
