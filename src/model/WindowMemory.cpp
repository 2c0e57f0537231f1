#include "model/WindowMemory.h"

#include "model/AppVolumeView.h"
#include "model/WindowSize.h"
#include "platform/defaults/UserDefaults.h"
#include "settings/PreferenceKeys.h"

void WindowMemory::restore(AppVolumeView& view, const platform::UserDefaults& defaults) {
    if (const auto frame =
            WindowSize::frameFromText(defaults.text(PreferenceKeys::mainWindowFrame)))
        view.setFrame(*frame);
    if (defaults.boolean(PreferenceKeys::mainWindowMaximized))
        view.setFillsScreen();
}

/// A frame of its own, for the window to go back to.
void WindowMemory::keep(const AppVolumeView& view, platform::UserDefaults& defaults) {
    defaults.set(PreferenceKeys::mainWindowFrame, WindowSize::frameText(view.frame()));
    if (view.fillsScreen())
        defaults.set(PreferenceKeys::mainWindowMaximized, true);
    else
        defaults.remove(PreferenceKeys::mainWindowMaximized);
}
