#include "platform/window/ModifierKeys.h"

#include <QGuiApplication>

namespace platform {

namespace {
Qt::KeyboardModifiers (*replacement)() = nullptr;
}

Qt::KeyboardModifiers modifierKeys() {
    return replacement ? replacement() : QGuiApplication::queryKeyboardModifiers();
}

void replaceModifierKeys(Qt::KeyboardModifiers (*source)()) {
    replacement = source;
}

} // namespace platform
