#include "install/WindowsWithoutInput.h"

#include <QApplication>

WindowsWithoutInput::WindowsWithoutInput() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
        if (!window->isVisible() || !window->isEnabled())
            continue;
        window->setEnabled(false);
        windows_.append(window);
    }
}

WindowsWithoutInput::~WindowsWithoutInput() {
    for (const auto& window : std::as_const(windows_)) {
        if (window != nullptr)
            window->setEnabled(true);
    }
}
