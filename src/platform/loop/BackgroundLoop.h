#pragma once

namespace platform {

class RunLoop;

/// The run loop of a background thread, started on first use: for timers and descriptors that must
/// not depend on the main thread. Use it for short, non-blocking work only; submit the rest to a
/// DispatchQueue.

/// The loop. Post to it from any thread; everything else only in calls posted to it. Throws
/// std::system_error if no thread or descriptor is available; the next call tries again.
RunLoop& backgroundLoop();

} // namespace platform
