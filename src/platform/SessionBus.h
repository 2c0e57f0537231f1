#pragma once

class QString;

namespace platform {

/// Whether a program owns that name on the session bus now; false without a bus. Waits for the bus.
/// Main thread only.
bool isOnSessionBus(const QString& name);

} // namespace platform
