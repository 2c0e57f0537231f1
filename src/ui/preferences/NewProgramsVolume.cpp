#include "ui/preferences/NewProgramsVolume.h"

#include "model/RememberedApps.h"
#include "platform/text/Texts.h"
#include "settings/PreferenceKeys.h"
#include "settings/ProgramSetting.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>

namespace {

constexpr int usualPercent = 50;
constexpr int step = 5;

} // namespace

NewProgramsVolume::NewProgramsVolume(RememberedApps& apps, platform::UserDefaults& defaults)
    : apps_(apps)
    , isWanted_(new QCheckBox(Texts::tr("Start &new programs at")))
    , percent_(new QSpinBox)
    , observation_(defaults.observe(PreferenceKeys::newAppVolume, [this] { show(); })) {
    setToolTip(Texts::tr("For programs that were never seen before."));
    percent_->setRange(0, ProgramSetting::fullVolume);
    percent_->setSingleStep(step);
    percent_->setValue(usualPercent);
    percent_->setSuffix(QStringLiteral(" %"));
    percent_->setKeyboardTracking(false);
    percent_->setAccessibleName(Texts::tr("Volume of new programs"));
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(isWanted_);
    layout->addWidget(percent_);
    layout->addStretch();
    show();
    connect(isWanted_, &QAbstractButton::toggled, this, &NewProgramsVolume::store);
    connect(percent_, &QSpinBox::valueChanged, this, &NewProgramsVolume::store);
}

/// While it is off, the field keeps what it had.
void NewProgramsVolume::show() {
    const auto percent = apps_.defaultVolume();
    const QSignalBlocker quietBox(isWanted_);
    const QSignalBlocker quietField(percent_);
    isWanted_->setChecked(percent.has_value());
    percent_->setEnabled(percent.has_value());
    if (percent && *percent != percent_->value())
        percent_->setValue(*percent);
}

void NewProgramsVolume::store() {
    apps_.setDefaultVolume(isWanted_->isChecked() ? std::optional(percent_->value())
                                                  : std::nullopt);
    show();
}

void NewProgramsVolume::commit() {
    percent_->interpretText();
}
