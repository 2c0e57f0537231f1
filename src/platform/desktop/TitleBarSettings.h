#pragma once

#include <QMap>
#include <QString>

#include <vector>

namespace platform {

class DesktopSettings;

/// The actions and button positions of the desktop's title bars, for our own title bar. A plain
/// value; missing settings have the most common value.
struct TitleBarSettings {
    enum class Action { none, maximize, minimize, lower, menu };
    enum class Button { close, minimize, menu };
    using Buttons = std::vector<Button>;

    Action doubleClick = Action::maximize;
    Action middleClick = Action::none;
    Action secondaryClick = Action::menu;

    /// From left to right, at the left and at the right end.
    Buttons left = {Button::menu};
    Buttons right = {Button::minimize, Button::close};

    /// From the desktop's current settings. Those of an X11 desktop (`x11`, by XSETTINGS name) come
    /// first: the portal may report another desktop's settings there.
    static TitleBarSettings of(const DesktopSettings& settings,
                               const QMap<QString, QString>& x11 = {});

    /// Parse the desktops' texts: "toggle-maximize"; "menu:minimize,maximize,close", of which only
    /// the buttons that we have are used. There is always a menu button, if missing at the end
    /// without buttons; a text without a colon is ignored.
    static Action actionFromText(const QString& text, Action otherwise);
    void placeButtons(const QString& layout);

    bool operator==(const TitleBarSettings&) const = default;
};

} // namespace platform
