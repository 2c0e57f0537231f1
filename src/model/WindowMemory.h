#pragma once

class AppVolumeView;

namespace platform {
class UserDefaults;
}

/// What the preferences hold of the volume window: its frame, and whether it is maximised. Main
/// thread only.
namespace WindowMemory {

void restore(AppVolumeView& view, const platform::UserDefaults& defaults);
void keep(const AppVolumeView& view, platform::UserDefaults& defaults);

} // namespace WindowMemory
