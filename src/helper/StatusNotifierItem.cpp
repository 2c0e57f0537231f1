#include "helper/StatusNotifierItem.h"

#include <utility>

StatusNotifierItem::StatusNotifierItem(Actions actions, QString iconThemePath,
                                       const QString& menuPath)
    : actions_(std::move(actions)), iconThemePath_(std::move(iconThemePath)), menu_(menuPath) {}

void StatusNotifierItem::setLook(const Look& look) {
    const Look before = std::exchange(look_, look);
    if (before.title != look.title)
        Q_EMIT NewTitle();
    if (before.icon != look.icon)
        Q_EMIT NewIcon();
    if (before != look)
        Q_EMIT NewToolTip();
}

void StatusNotifierItem::Activate(int /*x*/, int /*y*/) {
    actions_.activated(takeToken());
}

/// There is no XAyatanaSecondaryActivate here, which its hosts try first: a middle click would
/// count twice.
void StatusNotifierItem::SecondaryActivate(int /*x*/, int /*y*/) {
    actions_.secondaryActivated();
}

/// Hosts show the menu themselves.
void StatusNotifierItem::ContextMenu(int /*x*/, int /*y*/) {
    actions_.menuWanted();
}

void StatusNotifierItem::Scroll(int delta, const QString& orientation) {
    if (orientation.compare(QLatin1String("vertical"), Qt::CaseInsensitive) == 0)
        actions_.scrolled(delta);
}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) {
    token_ = token;
}
