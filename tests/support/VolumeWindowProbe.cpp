#include "support/VolumeWindowProbe.h"

#include "model/VolumeConversion.h"
#include "ui/VolumeWindow.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QLabel>

namespace support {

static MVCollectionView& gridOf(const VolumeWindow& window) {
    return *window.findChild<MVCollectionView*>();
}

QStringList rowNames(const VolumeWindow& window) {
    QStringList names;
    for (const auto& item : gridOf(window).items())
        names += item->label().text();
    return names;
}

RowProbe::RowProbe(const VolumeWindow& window, const QString& name) {
    for (const auto& each : gridOf(window).items()) {
        if (each->label().text() != name)
            continue;
        item = each.get();
        slider = &each->slider();
        mute = &each->muteView();
    }
}

void RowProbe::slideTo(int percent) const {
    slider->setSliderValue_(VolumeConversion::fractionForPercent(percent), false);
}

int RowProbe::level() const {
    return static_cast<int>(VolumeConversion::percentOfLevel(slider->activity()));
}

QString notice(const VolumeWindow& window) {
    const auto* const label = window.findChild<QLabel*>("hint");
    return label->isHidden() ? QString() : label->text();
}

} // namespace support
