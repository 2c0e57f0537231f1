#pragma once

#include <chrono>
#include <functional>

namespace support {

/// Longer than anything takes on a machine that is busy with other things.
inline constexpr std::chrono::seconds patience{20};

/// Waits for what another thread or process brings about: serves the calling thread's run loop and,
/// in Qt test programs, Qt's events until `condition` holds. Real time counts, whatever the
/// program's clock says. False when `bound` has passed without it.
[[nodiscard]] bool waitUntil(const std::function<bool()>& condition,
                             std::chrono::milliseconds bound = patience);

/// Serves what is ready now, as waitUntil() does, and returns without waiting.
void serveEvents();

/// What serves a toolkit's events, or null. Set by the main() of Qt test programs; called on the
/// main thread only.
void setEventServer(std::function<void()> server);

} // namespace support
