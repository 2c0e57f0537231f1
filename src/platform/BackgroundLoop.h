#pragma once

namespace platform {

class RunLoop;

/// The run loop of a thread that the process starts on first use and keeps: for timers and
/// descriptors that must not depend on the main thread. Only short, non-blocking work belongs on
/// it; hand the rest to a DispatchQueue.

/// The loop. Post to it from any thread; everything else only in calls posted to it.
RunLoop& backgroundLoop();

} // namespace platform
