#include "look/theme/ThemePalette.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"

#include <QGuiApplication>

QPalette themePalette() {
    const MVBlackTheme& theme = CurrentTheme::theme();
    if (theme.isHighContrast())
        return QGuiApplication::palette();
    const QColor window = theme.windowTitleBarGradientColor1();
    const QColor base = theme.scrollerTrackBackgroundColor();
    const QColor text = theme.windowTitleBarTextColor();
    const QColor button = theme.windowTitleBarGradientColor2();
    QPalette palette(button, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, lighterBy(base, 0.04));
    palette.setColor(QPalette::ToolTipBase, base);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::BrightText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::PlaceholderText, lighterBy(window, 0.55));
    palette.setColor(QPalette::Highlight, theme.displayNameActivityColor());
    palette.setColor(QPalette::HighlightedText, base);
    palette.setColor(QPalette::Link, theme.displayNameActivityColor());
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, lighterBy(window, 0.4));
    return palette;
}
