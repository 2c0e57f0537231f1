#include "platform/desktop/TitleBarSettings.h"

#include "platform/desktop/DesktopSettings.h"

#include <QStringList>

namespace platform {

namespace {

/// The menu is not among them: desktops mean a different menu.
TitleBarSettings::Buttons buttonsFromText(const QString& text) {
    TitleBarSettings::Buttons buttons;
    for (const QString& name : text.split(QLatin1Char(','))) {
        if (name == QLatin1String("close"))
            buttons.push_back(TitleBarSettings::Button::close);
        if (name == QLatin1String("minimize"))
            buttons.push_back(TitleBarSettings::Button::minimize);
    }
    return buttons;
}

} // namespace

TitleBarSettings::Action TitleBarSettings::actionFromText(const QString& text, Action otherwise) {
    if (text.startsWith(QLatin1String("toggle-maximize")))
        return Action::maximize;
    if (text == QLatin1String("minimize"))
        return Action::minimize;
    if (text == QLatin1String("lower"))
        return Action::lower;
    if (text == QLatin1String("menu"))
        return Action::menu;
    return text == QLatin1String("none") || text == QLatin1String("toggle-shade") ? Action::none
                                                                                  : otherwise;
}

void TitleBarSettings::placeButtons(const QString& layout) {
    const QStringList ends = layout.split(QLatin1Char(':'));
    if (ends.size() != 2)
        return;
    left = buttonsFromText(ends[0]);
    right = buttonsFromText(ends[1]);
    if (left.empty())
        left.push_back(Button::menu);
    else
        right.insert(right.begin(), Button::menu);
}

TitleBarSettings TitleBarSettings::of(const DesktopSettings& settings,
                                      const QMap<QString, QString>& x11) {
    const auto text = [&](const char* x11Name, const char* key) {
        const auto told = x11.constFind(QLatin1String(x11Name));
        return told != x11.cend() ? *told
                                  : settings
                                        .value(QStringLiteral("org.gnome.desktop.wm.preferences"),
                                               QLatin1String(key))
                                        .toString();
    };
    TitleBarSettings titleBar;
    titleBar.doubleClick = actionFromText(
        text("Gtk/TitlebarDoubleClick", "action-double-click-titlebar"), titleBar.doubleClick);
    titleBar.middleClick = actionFromText(
        text("Gtk/TitlebarMiddleClick", "action-middle-click-titlebar"), titleBar.middleClick);
    titleBar.secondaryClick = actionFromText(
        text("Gtk/TitlebarRightClick", "action-right-click-titlebar"), titleBar.secondaryClick);
    titleBar.placeButtons(text("Gtk/DecorationLayout", "button-layout"));
    return titleBar;
}

} // namespace platform
