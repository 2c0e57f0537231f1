#include "look/window/MenuLook.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"

#include <QMenu>

namespace {

/// Square, flat and opaque, whatever the style of the desktop draws.
QString styleSheet() {
    if (CurrentTheme::theme().isHighContrast())
        return {};
    const QPalette palette = themePalette();
    const auto name = [&](QPalette::ColorRole role, QPalette::ColorGroup group = QPalette::Active) {
        return palette.color(group, role).name();
    };
    return QStringLiteral(
               "QMenu { background: %1; color: %2; border: 1px solid %3; padding: 4px 0; }"
               "QMenu::item { padding: 5px 20px 5px 20px; background: transparent; }"
               "QMenu::item:selected:enabled { background: %4; color: %1; }"
               "QMenu::item:disabled { color: %5; }"
               "QMenu::separator { height: 1px; background: %3; margin: 4px 0; }")
        .arg(name(QPalette::Base), name(QPalette::Text), name(QPalette::Button),
             name(QPalette::Highlight), name(QPalette::Text, QPalette::Disabled));
}

} // namespace

void followTheme(QMenu& menu) {
    QObject::connect(&menu, &QMenu::aboutToShow, &menu, [&menu] {
        menu.setPalette(themePalette());
        menu.setStyleSheet(styleSheet());
    });
}
