#include "look/window/AccessibleWindow.h"

#include "look/window/AlertWindow.h"
#include "look/window/BarText.h"
#include "look/window/MVCustomWindow.h"
#include "look/window/ProblemBar.h"
#include "look/window/QNToolTip.h"

#include <QAccessibleWidget>

namespace {

/// Qt owns the result. A window's name is its title.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* const alert = qobject_cast<AlertWindow*>(object))
        return new QAccessibleWidget(alert, QAccessible::AlertMessage);
    if (auto* const window = qobject_cast<MVCustomWindow*>(object))
        return new QAccessibleWidget(window, QAccessible::Window);
    if (auto* const tip = qobject_cast<QNToolTip*>(object))
        return new QAccessibleWidget(tip, QAccessible::ToolTip);
    if (auto* const bar = qobject_cast<ProblemBar*>(object))
        return new QAccessibleWidget(bar, QAccessible::AlertMessage);
    if (auto* const text = qobject_cast<BarText*>(object))
        return new QAccessibleWidget(text, QAccessible::StaticText);
    return nullptr;
}

} // namespace

void installAccessibleWindow() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(&makeInterface);
        return true;
    }();
}
