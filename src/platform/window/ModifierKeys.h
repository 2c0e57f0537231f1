#pragma once

#include <Qt>

namespace platform {

/// The modifier keys that are held down at this moment, Command being the Meta (Super) key. Wayland
/// tells them only to a window that has the keyboard, so at the start of the program the answer
/// there is none. The main thread, with an application object.
Qt::KeyboardModifiers modifierKeys();

/// Has `source` be asked instead (null: the keyboard again). For tests.
void replaceModifierKeys(Qt::KeyboardModifiers (*source)());

} // namespace platform
