#include "ui/preferences/MVPrefsGeneral.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/text/Texts.h"
#include "platform/window/BundleImage.h"
#include "settings/PreferenceKeys.h"
#include "ui/TNMenuBarIcon.h"
#include "ui/preferences/IconView.h"
#include "ui/preferences/MenuBarHelper.h"
#include "ui/preferences/NewProgramsVolume.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

constexpr int margin = 24;
constexpr int gap = 12;
constexpr int indent = 24;
constexpr int leastWidth = 380;

} // namespace

MVPrefsGeneral::MVPrefsGeneral(const Dependencies& dependencies) : dependencies_(dependencies) {
    for (const QString& key :
         {PreferenceKeys::showInMenuBar, PreferenceKeys::useColorMenuBarIcon,
          PreferenceKeys::disableSoundEffects, PreferenceKeys::moreContrast,
          PreferenceKeys::writeCrashReports, PreferenceKeys::offerCrashReports})
        observations_.push_back(dependencies_.defaults.observe(key, [this] { show(); }));
    if (dependencies_.helper != nullptr)
        connect(dependencies_.helper, &MenuBarHelper::changed, this, &MVPrefsGeneral::showHelper);
}

MVPrefsGeneral::~MVPrefsGeneral() = default;

QString MVPrefsGeneral::label() const {
    return Texts::tr("General");
}

QIcon MVPrefsGeneral::icon() const {
    constexpr int usualSize = 32;
    const QIcon themed = QIcon::fromTheme(QStringLiteral("preferences-system"));
    // A theme may name a file that is damaged.
    return themed.pixmap(usualSize).isNull() ? platform::bundleIcon(QStringLiteral("General.icns"))
                                             : themed;
}

std::unique_ptr<QWidget> MVPrefsGeneral::loadView() {
    auto view = std::make_unique<QWidget>();
    auto* const rows = new QVBoxLayout(view.get());
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->setSpacing(gap);
    rows->addWidget(makeMenuBarRows());
    playSample_ = new QCheckBox(Texts::tr("&Play a sample sound when a volume was set"));
    connect(playSample_, &QAbstractButton::toggled, this, [this](bool isWanted) {
        if (store(PreferenceKeys::disableSoundEffects, !isWanted))
            QNLog(qnlog_user, "%@ \"Play a sample sound\"", isWanted ? "Checked" : "Unchecked");
    });
    rows->addWidget(playSample_);
    moreContrast_ = new QCheckBox(Texts::tr("More con&trast"));
    connect(moreContrast_, &QAbstractButton::toggled, this, [this](bool isWanted) {
        if (store(PreferenceKeys::moreContrast, isWanted))
            QNLog(qnlog_user, "%@ \"More contrast\"", isWanted ? "Checked" : "Unchecked");
    });
    rows->addWidget(moreContrast_);
    newPrograms_ = new NewProgramsVolume(dependencies_.apps, dependencies_.defaults);
    rows->addWidget(newPrograms_);
    rows->addWidget(makeCrashRows());
    rows->addStretch();
    view->setMinimumWidth(leastWidth);
    show();
    return view;
}

QWidget* MVPrefsGeneral::makeMenuBarRows() {
    auto* const part = new QWidget;
    auto* const rows = new QVBoxLayout(part);
    rows->setContentsMargins({});
    rows->setSpacing(gap / 2);
    showInMenuBar_ = new QCheckBox(Texts::tr("Show in &menu bar"));
    connect(showInMenuBar_, &QAbstractButton::toggled, this,
            [this](bool isWanted) { store(PreferenceKeys::showInMenuBar, isWanted); });
    rows->addWidget(showInMenuBar_);
    helperState_ = new QLabel;
    helperState_->setTextFormat(Qt::PlainText);
    helperState_->setWordWrap(true);
    helperState_->setMinimumHeight(helperState_->fontMetrics().lineSpacing());
    QSizePolicy policy = helperState_->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // nothing moves when there is a state to tell
    helperState_->setSizePolicy(policy);
    iconChoice_ = makeIconChoice();
    auto* const indented = new QVBoxLayout;
    indented->addWidget(helperState_);
    indented->addWidget(iconChoice_);
    auto* const below = new QHBoxLayout; // unlike a margin, its space is mirrored
    below->addSpacing(indent);
    below->addLayout(indented, 1);
    rows->addLayout(below);
    return part;
}

QWidget* MVPrefsGeneral::makeIconChoice() {
    auto* const part = new QWidget;
    auto* const row = new QHBoxLayout(part);
    row->setContentsMargins({});
    colorImage_ = new IconView(TNMenuBarIcon::colorIcon(), TNMenuBarIcon::iconSize());
    grayImage_ = new IconView(TNMenuBarIcon::grayscaleIcon(), TNMenuBarIcon::iconSize());
    color_ = new QRadioButton(Texts::tr("&Color icon"));
    grayscale_ = new QRadioButton(Texts::tr("&Grayscale icon"));
    row->addWidget(color_);
    row->addWidget(colorImage_);
    row->addSpacing(2 * gap);
    row->addWidget(grayscale_);
    row->addWidget(grayImage_);
    row->addStretch();
    connect(color_, &QAbstractButton::toggled, this,
            [this](bool isColor) { store(PreferenceKeys::useColorMenuBarIcon, isColor); });
    return part;
}

QWidget* MVPrefsGeneral::makeCrashRows() {
    auto* const part = new QWidget;
    auto* const rows = new QVBoxLayout(part);
    rows->setContentsMargins({});
    rows->setSpacing(gap / 2);
    writeCrashReports_ =
        new QCheckBox(Texts::tr("&Keep a report when a part of the program ends unexpectedly"));
    offerCrashReports_ = new QCheckBox(Texts::tr("&Ask whether to send it"));
    connect(writeCrashReports_, &QAbstractButton::toggled, this, [this](bool isWanted) {
        store(PreferenceKeys::writeCrashReports, isWanted);
        offerCrashReports_->setEnabled(isWanted);
    });
    connect(offerCrashReports_, &QAbstractButton::toggled, this,
            [this](bool isWanted) { store(PreferenceKeys::offerCrashReports, isWanted); });
    rows->addWidget(writeCrashReports_);
    auto* const below = new QHBoxLayout;
    below->addSpacing(indent);
    below->addWidget(offerCrashReports_, 1);
    rows->addLayout(below);
    return part;
}

/// Also called when a control follows what is stored.
bool MVPrefsGeneral::store(const QString& key, bool value) {
    if (dependencies_.defaults.boolean(key) == value)
        return false;
    dependencies_.defaults.set(key, value);
    return true;
}

void MVPrefsGeneral::show() {
    if (showInMenuBar_ == nullptr)
        return;
    const platform::UserDefaults& defaults = dependencies_.defaults;
    showInMenuBar_->setChecked(defaults.boolean(PreferenceKeys::showInMenuBar));
    const bool isColor = defaults.boolean(PreferenceKeys::useColorMenuBarIcon);
    (isColor ? color_ : grayscale_)->setChecked(true);
    playSample_->setChecked(!defaults.boolean(PreferenceKeys::disableSoundEffects));
    moreContrast_->setChecked(defaults.boolean(PreferenceKeys::moreContrast));
    writeCrashReports_->setChecked(defaults.boolean(PreferenceKeys::writeCrashReports));
    offerCrashReports_->setChecked(defaults.boolean(PreferenceKeys::offerCrashReports));
    offerCrashReports_->setEnabled(writeCrashReports_->isChecked());
    showHelper();
}

/// The pane does not wait for the helper, but takes no further order for it meanwhile.
void MVPrefsGeneral::showHelper() {
    if (showInMenuBar_ == nullptr)
        return;
    const MenuBarHelper* const helper = dependencies_.helper;
    const QString why =
        helper != nullptr ? helper->whyUnavailable()
                          : Texts::tr("The icon in the menu bar isn't part of this installation.");
    const bool isChanging = why.isEmpty() && helper->isChanging();
    showInMenuBar_->setEnabled(why.isEmpty() && !isChanging);
    iconChoice_->setEnabled(why.isEmpty());
    const QString state = !isChanging                   ? why
                          : showInMenuBar_->isChecked() ? Texts::tr("It is being started…")
                                                        : Texts::tr("It is being ended…");
    helperState_->setText(state);
    helperState_->setVisible(!state.isEmpty());
    showInMenuBar_->setAccessibleDescription(state);
}

void MVPrefsGeneral::windowWillClose() {
    if (newPrograms_ != nullptr)
        newPrograms_->commit();
}
