#include "ui/window/AccessibleWindow.h"

#include "ui/window/MVCustomWindow.h"
#include "ui/window/QNToolTip.h"

#include <QAccessibleWidget>

namespace {

/// Qt owns the answer. A window's name is its title.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* const window = qobject_cast<MVCustomWindow*>(object))
        return new QAccessibleWidget(window, QAccessible::Window);
    if (auto* const tip = qobject_cast<QNToolTip*>(object))
        return new QAccessibleWidget(tip, QAccessible::ToolTip);
    return nullptr;
}

} // namespace

void installAccessibleWindow() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(&makeInterface);
        return true;
    }();
}
