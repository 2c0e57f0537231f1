#pragma once

#include <QDBusConnection>

/// The nice level of the sound server and its session manager.
inline constexpr int kSoundNiceLevel = -11;

/// Raises the priority of the calling thread to that of the sound services: sets kSoundNiceLevel if
/// permitted, else asks RealtimeKit on `bus`, the system bus, without waiting. If both fail,
/// nothing changes.
void raiseThreadPriority(const QDBusConnection& bus);
