#include "PaneFixture.h"

#include "settings/PreferenceKeys.h"
#include "ui/TNMenuBarIcon.h"
#include "ui/preferences/IconView.h"
#include "ui/preferences/MVPrefsGeneral.h"
#include "ui/preferences/MenuBarHelper.h"

#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QSpinBox>

namespace {

class PlainHelper final : public MenuBarHelper {
  public:
    QString whyUnavailable() const override { return why; }
    bool isChanging() const override { return changing; }

    QString why;
    bool changing = false;
};

class GeneralPaneTest : public PaneFixture {
  protected:
    void show(MenuBarHelper* helper) {
        model_.defaults.registerDefaults(PreferenceKeys::defaults());
        window_.addController(QNPreferencesItemViewController::controller<MVPrefsGeneral>(
            MVPrefsGeneral::Dependencies{model_.defaults, model_.controller.rememberedApps(),
                                         helper}));
        window_.showWindow();
    }

    /// As people do, on the box or the circle at its start.
    static void click(QAbstractButton* button) {
        QTest::mouseClick(button, Qt::LeftButton, {}, {8, button->height() / 2});
    }

    bool stored(const QString& key) const { return model_.defaults.boolean(key); }

    PlainHelper helper_;
};

} // namespace

TEST_F(GeneralPaneTest, EachControlStoresAndFollowsChangesMadeElsewhere) {
    show(&helper_);
    struct Case {
        QAbstractButton* control;
        const QString& key;
        bool isInverted;
    };
    const Case cases[] = {
        {find<QCheckBox>("Show in menu bar"), PreferenceKeys::showInMenuBar, false},
        {find<QRadioButton>("Color icon"), PreferenceKeys::useColorMenuBarIcon, false},
        {find<QCheckBox>("Play a sample sound when a volume was set"),
         PreferenceKeys::disableSoundEffects, true},
        {find<QCheckBox>("More contrast"), PreferenceKeys::moreContrast, false},
        {find<QCheckBox>("Keep a report when a part of the program ends unexpectedly"),
         PreferenceKeys::writeCrashReports, false},
        {find<QCheckBox>("Ask whether to send it"), PreferenceKeys::offerCrashReports, false}};
    for (const auto& [control, key, isInverted] : cases) {
        const auto agrees = [&, &control = control, &key = key, isInverted = isInverted] {
            return control->isChecked() == (stored(key) != isInverted);
        };
        EXPECT_TRUE(agrees()) << key.toStdString();
        const bool before = stored(key);
        bool isAnnounced = false;
        const auto observation = model_.defaults.observe(key, [&] { isAnnounced = true; });
        click(control);
        EXPECT_NE(stored(key), before) << key.toStdString();
        EXPECT_TRUE(agrees());
        ASSERT_TRUE(support::waitUntil([&] { return isAnnounced; }));
        model_.defaults.set(key, before);
        EXPECT_TRUE(support::waitUntil(agrees)) << key.toStdString();
    }
    model_.defaults.set(PreferenceKeys::useColorMenuBarIcon, true);
    ASSERT_TRUE(support::waitUntil([&] { return cases[1].control->isChecked(); }));
    click(find<QRadioButton>("Grayscale icon"));
    EXPECT_FALSE(stored(PreferenceKeys::useColorMenuBarIcon));
}

TEST_F(GeneralPaneTest, TheVolumeOfNewProgramsIsOffOrAPercent) {
    show(nullptr);
    auto* const isWanted = find<QCheckBox>("Start new programs at");
    auto* const percent = find<QSpinBox>("Volume of new programs");
    RememberedApps& apps = model_.controller.rememberedApps();
    EXPECT_FALSE(isWanted->isChecked());
    EXPECT_FALSE(percent->isEnabled());
    click(isWanted);
    EXPECT_EQ(apps.defaultVolume(), 50);
    QTest::keyClick(percent, Qt::Key_Down);
    EXPECT_EQ(apps.defaultVolume(), 45);
    apps.setDefaultVolume(30);
    EXPECT_TRUE(support::waitUntil([&] { return percent->value() == 30; }));
    percent->selectAll();
    QTest::keyClicks(percent, "7");
    EXPECT_EQ(apps.defaultVolume(), 30) << "somebody is typing";
    window_.window().close();
    EXPECT_EQ(apps.defaultVolume(), 7);
    click(isWanted);
    EXPECT_EQ(apps.defaultVolume(), std::nullopt);
    EXPECT_EQ(percent->value(), 7);
    apps.setDefaultVolume(100);
    EXPECT_TRUE(support::waitUntil([&] { return isWanted->isChecked(); }));
}

TEST_F(GeneralPaneTest, TheIconInTheMenuBarTakesOrdersOnlyWhereAHelperDoes) {
    show(&helper_);
    auto* const box = find<QCheckBox>("Show in menu bar");
    auto* const color = find<QRadioButton>("Color icon");
    const auto place = [&] {
        return QRect(color->mapTo(&window_.window(), QPoint()), color->size());
    };
    const QRect usualPlace = place();
    click(box);
    helper_.changing = true;
    Q_EMIT helper_.changed();
    QCoreApplication::sendPostedEvents(); // it is laid out
    EXPECT_EQ(place(), usualPlace) << "nothing moves";
    EXPECT_FALSE(box->isEnabled());
    EXPECT_EQ(box->accessibleDescription(), "It is being ended…");
    EXPECT_TRUE(color->isEnabled()) << "the pane goes on";
    helper_.changing = false;
    helper_.why = "It is not there";
    Q_EMIT helper_.changed();
    EXPECT_FALSE(box->isEnabled());
    EXPECT_FALSE(color->isEnabled());
    EXPECT_TRUE(find<QLabel>("It is not there")->isVisible());
    helper_.why.clear();
    Q_EMIT helper_.changed();
    EXPECT_TRUE(box->isEnabled());
    EXPECT_EQ(box->accessibleDescription(), QString());
}

TEST_F(GeneralPaneTest, EachIconIsShownBesideItsName) {
    show(&helper_);
    QList<QImage> images;
    for (const auto* const each : window_.window().findChildren<IconView*>()) {
        EXPECT_EQ(each->size(), TNMenuBarIcon::iconSize());
        images += each->icon().pixmap(TNMenuBarIcon::iconSize()).toImage();
    }
    ASSERT_EQ(images.size(), 2);
    EXPECT_EQ(images[0], TNMenuBarIcon::colorIcon().pixmap(TNMenuBarIcon::iconSize()).toImage());
    EXPECT_EQ(images[1],
              TNMenuBarIcon::grayscaleIcon().pixmap(TNMenuBarIcon::iconSize()).toImage());
}
