#pragma once

#include <QMap>
#include <QString>

#include <vector>

namespace platform {

class DesktopSettings;

/// What a desktop's title bars do and where they have their buttons, so that ours do likewise. A
/// plain value; what a desktop does not say is as most have it.
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

    /// As the desktop's settings are now. What an X11 desktop tells its programs (`x11`, by the
    /// names of XSETTINGS) goes first: the portal may tell of another desktop's settings there.
    static TitleBarSettings of(const DesktopSettings& settings,
                               const QMap<QString, QString>& x11 = {});

    /// From the desktops' texts: "toggle-maximize"; of "menu:minimize,maximize,close" all buttons
    /// that we have. There is a menu always, at the end that has no buttons of its own; a text
    /// without a colon says nothing.
    static Action actionFromText(const QString& text, Action otherwise);
    void placeButtons(const QString& layout);

    bool operator==(const TitleBarSettings&) const = default;
};

} // namespace platform
