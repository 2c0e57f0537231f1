#include "look/theme/CurrentTheme.h"

#include "look/theme/HighContrastTheme.h"
#include "look/theme/MVOrangeBrownTheme.h"
#include "platform/desktop/DesktopAnimations.h"
#include "platform/desktop/DesktopSettings.h"

#include <QGuiApplication>

#include <utility>

using platform::DesktopSettings;

CurrentTheme& CurrentTheme::shared() {
    static auto* const current = new CurrentTheme;
    return *current;
}

CurrentTheme::CurrentTheme() : theme_(&MVOrangeBrownTheme::sharedTheme()) {
    connect(&DesktopSettings::shared(), &DesktopSettings::changed, this, &CurrentTheme::review);
    review();
}

void CurrentTheme::setMoreContrast(bool isWanted) {
    if (std::exchange(isMoreContrastWanted_, isWanted) != isWanted)
        review();
}

void CurrentTheme::review() {
    const bool isHighContrast =
        isMoreContrastWanted_ || platform::isHighContrastWanted(DesktopSettings::shared());
    if (!isHighContrast && highContrast_ == nullptr)
        return;
    auto chosen = isHighContrast ? std::make_unique<HighContrastTheme>(QGuiApplication::palette())
                                 : std::unique_ptr<HighContrastTheme>();
    theme_ = isHighContrast ? static_cast<const MVBlackTheme*>(chosen.get())
                            : &MVOrangeBrownTheme::sharedTheme();
    highContrast_ = std::move(chosen);
    ++generation_;
    Q_EMIT changed();
}
