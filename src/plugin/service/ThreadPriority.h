#pragma once

#include <QDBusConnection>

/// The nice level of the sound server and its session manager.
inline constexpr int kSoundNiceLevel = -11;

/// Prefers the calling thread to ordinary programs, as the services of sound are: to
/// kSoundNiceLevel, where the system lets us, else by asking RealtimeKit on `bus`, the system bus,
/// without waiting. Where neither helps, all stays as it is.
void raiseThreadPriority(const QDBusConnection& bus);
