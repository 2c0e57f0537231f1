#pragma once

namespace platform {

class RunLoop;

/// The run loop of a thread that the process starts on first use and keeps: for timers and
/// descriptors that must not depend on the main thread. Only short, non-blocking work belongs on
/// it; hand the rest to a DispatchQueue.

/// The loop. Post to it from any thread; everything else only in calls posted to it. Throws
/// std::system_error when the process gets no thread or descriptor for it; the next call tries
/// again.
RunLoop& backgroundLoop();

} // namespace platform
