#include "ui/MoreContrast.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "look/theme/CurrentTheme.h"
#include "settings/PreferenceKeys.h"
#include "ui/VolumeMenu.h"

MoreContrast::MoreContrast(platform::UserDefaults& defaults, VolumeMenu& menu)
    : defaults_(defaults)
    , menu_(menu)
    , observation_(defaults.observe(PreferenceKeys::moreContrast, [this] { show(); })) {
    QObject::connect(&menu, &VolumeMenu::moreContrastWanted, &menu, [&defaults](bool isWanted) {
        defaults.set(PreferenceKeys::moreContrast, isWanted);
        QNLog(qnlog_user, "%@ \"More contrast\"", isWanted ? "Checked" : "Unchecked");
    });
    show();
}

void MoreContrast::show() const {
    const bool isWanted = defaults_.boolean(PreferenceKeys::moreContrast);
    CurrentTheme::shared().setMoreContrast(isWanted);
    menu_.showMoreContrast(isWanted);
}
