#include "platform/desktop/DesktopAnimations.h"

#include "platform/desktop/DesktopSettings.h"

namespace platform {

namespace {

const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString interface = QStringLiteral("org.gnome.desktop.interface");

bool isOff(const QVariant& value) {
    return value.typeId() == QMetaType::Bool && !value.toBool();
}

} // namespace

const DesktopAnimations& DesktopAnimations::shared() {
    static const DesktopAnimations motion(DesktopSettings::shared());
    return motion;
}

bool DesktopAnimations::areEnabled() const {
    constexpr unsigned reduced = 1;
    return !isOff(settings_.value(interface, QStringLiteral("enable-animations"))) &&
           settings_.value(appearance, QStringLiteral("reduced-motion")).toUInt() != reduced;
}

/// Desktops tell it in three ways, the oldest by the name of a theme.
bool isHighContrastWanted(const DesktopSettings& settings) {
    constexpr unsigned higher = 1;
    const auto theme = [&](const char* key) {
        return settings.value(interface, QLatin1String(key)).toString();
    };
    return settings.value(appearance, QStringLiteral("contrast")).toUInt() == higher ||
           settings
               .value(QStringLiteral("org.gnome.desktop.a11y.interface"),
                      QStringLiteral("high-contrast"))
               .toBool() ||
           theme("gtk-theme").startsWith(QLatin1String("HighContrast"));
}

} // namespace platform
