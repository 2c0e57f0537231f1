#include "settings/PreferenceKeys.h"

QVariantMap PreferenceKeys::defaults() {
    return {{disabledCharacterPalette, true},
            {showInMenuBar, true},
            {useColorMenuBarIcon, false},
            {disableSoundEffects, false},
            {writeCrashReports, true},
            {offerCrashReports, true},
            {volume, 1.0}};
}
