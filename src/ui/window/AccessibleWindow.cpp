#include "ui/window/AccessibleWindow.h"

#include "ui/window/MVCustomWindow.h"

#include <QAccessibleWidget>

namespace {

/// Qt owns the answer. Its name is the title.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* const window = qobject_cast<MVCustomWindow*>(object);
    return window != nullptr ? new QAccessibleWidget(window, QAccessible::Window) : nullptr;
}

} // namespace

void installAccessibleWindow() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(&makeInterface);
        return true;
    }();
}
