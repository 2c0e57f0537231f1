#pragma once

#include <Qt>

namespace platform {

/// The modifier keys that are currently held down; Command is the Meta (Super) key. Wayland reports
/// them only to a focused window, so at the start of the program there are none. Main thread only,
/// with an application object.
Qt::KeyboardModifiers modifierKeys();

/// Uses `source` instead (null: the keyboard again). For tests.
void replaceModifierKeys(Qt::KeyboardModifiers (*source)());

} // namespace platform
