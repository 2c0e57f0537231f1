#pragma once

/// What the programs beside this one find in the preferences: the path of this bundle, for the
/// helper, and the language of messages, for the plug-in. Main thread only.
namespace LaunchRecord {

/// Stores both, on the disk if they have changed. Waits for a disk for a limited time.
void store();

} // namespace LaunchRecord
