#include "PaneFixture.h"

#include "comm/MVCommSocketPath.h"
#include "model/MVIgnoredApp.h"
#include "platform/bus/NotificationCenter.h"
#include "settings/IgnoredNames.h"
#include "settings/PreferenceKeys.h"
#include "ui/preferences/BuiltInDescriptions.h"
#include "ui/preferences/IgnoredAppsTable.h"
#include "ui/preferences/MVPrefsIgnored.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QLabel>
#include <QLineEdit>

#include <functional>

namespace {

class IgnoredPaneTest : public PaneFixture {
  public:
    ~IgnoredPaneTest() override { MVIgnoredApps::setPluginNotifier(nullptr); }

  protected:
    void SetUp() override {
        MVIgnoredApps::setPluginNotifier([this] { ++told_; });
    }

    void show(const QStringList& custom = {}) {
        for (const QString& name : custom)
            model_.ignoredApps.addCustomIgnore(name);
        told_ = 0;
        pane_ = QNPreferencesItemViewController::controller<MVPrefsIgnored>(
            MVPrefsIgnored::Dependencies{model_.ignoredApps, model_.workspace, [this] {
                                             return knownPrograms(model_.controller,
                                                                  model_.workspace);
                                         }});
        window_.addController(pane_);
        window_.showWindow();
        window_.window().activateWindow();
        ASSERT_TRUE(support::waitUntil([&] { return window_.window().isActiveWindow(); }));
    }

    static QStringList names(const IgnoredAppsTable& table, int iconColumn) {
        QStringList all;
        for (int row = 0; row < table.model()->rowCount(); ++row)
            all += table.model()->index(row, iconColumn + 1).data().toString();
        return all;
    }
    QStringList customNames() const {
        return names(*pane_->customTableView(), CustomIgnoredModel::icon);
    }

    static void clickCell(IgnoredAppsTable& table, int row, int column,
                          Qt::KeyboardModifiers modifiers = {}) {
        const QModelIndex index = table.model()->index(row, column);
        table.scrollTo(index);
        QTest::mouseClick(table.viewport(), Qt::LeftButton, modifiers,
                          table.visualRect(index).center());
    }

    QLineEdit& openSheet() {
        QTest::mouseClick(pane_->addProgramButton(), Qt::LeftButton);
        EXPECT_TRUE(support::waitUntil([&] { return pane_->addSheet()->isActiveWindow(); }));
        return pane_->addSheet()->addTextField();
    }

    std::shared_ptr<MVPrefsIgnored> pane_;
    int told_ = 0; // how often the plug-ins were
};

} // namespace

TEST_F(IgnoredPaneTest, UncheckingABuiltInEntryStoresItAndTellsThePlugins) {
    show();
    IgnoredAppsTable& table = *pane_->builtInTableView();
    EXPECT_EQ(table.model()->rowCount(), 43);
    const auto row = static_cast<int>(names(table, BuiltInIgnoredModel::icon).indexOf("Finder"));
    const auto isChecked = [&] {
        return table.model()->index(row, 0).data(Qt::CheckStateRole).toInt() == Qt::Checked;
    };
    EXPECT_TRUE(isChecked());
    clickCell(table, row, BuiltInIgnoredModel::enabled);
    EXPECT_FALSE(isChecked());
    EXPECT_EQ(model_.defaults.list(PreferenceKeys::disabledBuiltInIgnoredApps),
              QVariantList{"Finder"});
    EXPECT_EQ(told_, 1);
    QTest::keyClick(&table, Qt::Key_Space);
    EXPECT_TRUE(isChecked());
    EXPECT_FALSE(model_.defaults.value(PreferenceKeys::disabledBuiltInIgnoredApps).isValid());
    EXPECT_EQ(told_, 1);
    EXPECT_EQ(table.currentIndex().row(), row) << "reloading moves nothing";
    for (const std::string_view name : builtInIgnoredNames())
        EXPECT_FALSE(builtInDescription(QString::fromUtf8(name.data(), std::ssize(name))).isEmpty())
            << name;
}

TEST_F(IgnoredPaneTest, TheSelectedNamesAreRemovedFromTheHighestRowDown) {
    show({"a", "b", "c", "d", "e"});
    QList<QStringList> steps;
    const platform::NotificationObserver observer(
        MVIgnoredApps::didChangeNotification,
        [&](const QVariant& /*object*/) { steps += model_.ignoredApps.custom(); });
    IgnoredAppsTable& table = *pane_->customTableView();
    EXPECT_FALSE(pane_->removeButton()->isEnabled());
    clickCell(table, 1, CustomIgnoredModel::name);
    clickCell(table, 3, CustomIgnoredModel::name, Qt::ControlModifier);
    EXPECT_TRUE(pane_->removeButton()->isEnabled());
    QTest::keyClick(&table, Qt::Key_Delete);
    EXPECT_EQ(customNames(), (QStringList{"a", "c", "e"}));
    EXPECT_FALSE(pane_->removeButton()->isEnabled());
    clickCell(table, 2, CustomIgnoredModel::name);
    QTest::mouseClick(pane_->removeButton(), Qt::LeftButton);
    EXPECT_EQ(steps, (QList<QStringList>{{"a", "b", "c", "e"}, {"a", "c", "e"}, {"a", "c"}}));
    EXPECT_EQ(told_, 0);
}

TEST_F(IgnoredPaneTest, ANameIsAddedAsItWasTyped) {
    show({"zeta"});
    QLineEdit& field = openSheet();
    const BarButton& add = pane_->addSheet()->addButton();
    EXPECT_FALSE(add.isEnabled());
    QTest::keyClicks(&field, "  ");
    EXPECT_FALSE(add.isEnabled());
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_TRUE(pane_->addSheet()->isVisible());
    QTest::keyClicks(&field, "Alpha ");
    EXPECT_TRUE(add.isEnabled());
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_FALSE(pane_->addSheet()->isVisible());
    EXPECT_EQ(model_.ignoredApps.custom(), (QStringList{"  Alpha ", "zeta"}));
    EXPECT_EQ(customNames().size(), 2);
    EXPECT_EQ(told_, 1);
}

TEST_F(IgnoredPaneTest, TheSheetEndsWithTheTagOfItsButtonAndAddsNothingElse) {
    show();
    const std::pair<int, std::function<void()>> ends[] = {
        {0, [&] { QTest::mouseClick(&pane_->addSheet()->cancelButton(), Qt::LeftButton); }},
        {0, [&] { QTest::keyClick(pane_->addSheet(), Qt::Key_Escape); }},
        {0, [&] { QTest::keyClick(pane_->addSheet(), Qt::Key_C, Qt::AltModifier); }},
        {0, [&] { window_.window().close(); }},
        {1, [&] { QTest::mouseClick(&pane_->addSheet()->addButton(), Qt::LeftButton); }}};
    for (const auto& [tag, end] : ends) {
        window_.showWindow();
        QTest::keyClicks(&openSheet(), "player");
        QList<int> codes;
        const QObject listener;
        QObject::connect(pane_->addSheet(), &AddIgnoredAppSheet::ended, &listener,
                         [&](int code) { codes += code; });
        end();
        EXPECT_TRUE(
            support::waitUntil([&] { return !codes.isEmpty(); })); // a key animates a button
        EXPECT_EQ(codes, QList<int>{tag});
        EXPECT_EQ(customNames().size(), tag);
    }
    EXPECT_TRUE(window_.window().isVisible());
}

TEST_F(IgnoredPaneTest, TheSheetWarnsOfANameThatIsThereAlready) {
    show({"player"});
    QLineEdit& field = openSheet();
    const auto note = [&] { return pane_->addSheet()->findChild<QLabel*>("note")->text(); };
    for (const char* const text : {"Player", "finder"}) {
        field.setText(text);
        EXPECT_EQ(note(), QString("\"%1\" is ignored already.").arg(text));
    }
    field.setText("other");
    EXPECT_EQ(note(), QString());
    model_.ignoredApps.addCustomIgnore("other"); // elsewhere
    EXPECT_NE(note(), QString());
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(customNames(), (QStringList{"other", "other", "player"}));
}

TEST_F(IgnoredPaneTest, TheSheetCompletesShownNamesAndStoresThoseOfProcesses) {
    model_.workspace.setRunningApplications(
        {{1, "player", {}}, {2, "Player", {}}, {3, "player", {}}});
    model_.controller.rememberedApps().set("Old Game", {40, false});
    QStringList known;
    for (const KnownProgram& each : knownPrograms(model_.controller, model_.workspace))
        known += each.displayName;
    EXPECT_EQ(known, (QStringList{"Old Game", "Player", "player", "Sound Effects"}));
    show();
    QLineEdit& field = openSheet();
    for (const auto& [typed, rows, shown, stored] :
         {std::tuple{"layer", 2, "Player", "Player"},
          {"old", 1, "Old Game", "Old Game"},
          {"effects", 1, "Sound Effects", "coreaudiod"}}) {
        QTest::keyClicks(&field, typed);
        QAbstractItemView* const popup = field.completer()->popup();
        ASSERT_TRUE(popup->isVisible()) << typed;
        ASSERT_EQ(popup->model()->rowCount(), rows) << typed;
        QTest::keyClick(popup, Qt::Key_Down);
        QTest::keyClick(popup, Qt::Key_Return);
        EXPECT_EQ(field.text(), shown);
        EXPECT_TRUE(pane_->addSheet()->isVisible()) << "only the name has been chosen";
        QTest::keyClick(&field, Qt::Key_Return);
        EXPECT_TRUE(model_.ignoredApps.custom().contains(stored));
        EXPECT_TRUE(customNames().contains(shown));
        openSheet();
    }
}

TEST_F(IgnoredPaneTest, TheSheetGoesWithItsPane) {
    show();
    openSheet();
    const QPointer<AddIgnoredAppSheet> sheet = pane_->addSheet();
    window_.removeController(pane_);
    pane_.reset();
    EXPECT_EQ(sheet, nullptr);
    EXPECT_TRUE(window_.window().isVisible());
}

TEST_F(IgnoredPaneTest, TheTablesFollowWhatIsChangedElsewhereAndKeepTheSelection) {
    show({"b", "d"});
    clickCell(*pane_->customTableView(), 1, CustomIgnoredModel::name);
    openSheet().setText("x");
    model_.ignoredApps.addCustomIgnore("a");
    model_.ignoredApps.addCustomIgnore("c");
    EXPECT_EQ(customNames(), (QStringList{"a", "b", "c", "d"}));
    const auto selected = pane_->customTableView()->selectionModel()->selectedRows();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected[0].row(), 3);
    for (const char* const name : {"b", "d", "a", "c"})
        model_.ignoredApps.removeCustomIgnore(name);
    EXPECT_EQ(customNames(), QStringList());
    EXPECT_FALSE(pane_->removeButton()->isEnabled());
    EXPECT_EQ(pane_->addSheet()->addTextField().text(), "x");
}

TEST_F(IgnoredPaneTest, ManyNamesCanBeFiltered) {
    QStringList many;
    for (int i = 10; i < 31; ++i)
        many += QString("name %1").arg(i);
    show(many);
    auto filters = window_.window().findChildren<FilteredTable*>();
    ASSERT_EQ(filters.size(), 2);
    QLineEdit& filter = filters[1]->filter();
    EXPECT_TRUE(filters[0]->filter().isVisible());
    EXPECT_TRUE(filter.isVisible());
    QTest::keyClicks(&filter, "ME 2");
    EXPECT_EQ(customNames().size(), 10);
    clickCell(*pane_->customTableView(), 3, CustomIgnoredModel::name);
    QTest::mouseClick(pane_->removeButton(), Qt::LeftButton);
    EXPECT_FALSE(model_.ignoredApps.custom().contains("name 23"));
    EXPECT_EQ(model_.ignoredApps.custom().size(), 20);
    EXPECT_TRUE(filter.isVisible()) << "it is in use";
    filter.clear();
    EXPECT_EQ(customNames().size(), 20);
    EXPECT_FALSE(filter.isVisible());
}

TEST_F(IgnoredPaneTest, IconsAreLookedUpForVisibleRowsOnlyAndOnceWhateverTheCase) {
    QStringList many{"Safari", "safari"};
    for (int i = 0; i < 500; ++i)
        many += QString("name %1").arg(i);
    show(many);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window_.window()));
    pane_->customTableView()->grab();
    EXPECT_GT(model_.workspace.lookUps().size(), 3);
    EXPECT_LT(model_.workspace.lookUps().size(), 60);
    const auto color = [&](const char* name) {
        return pane_->imageForAppName(name).pixmap(16).toImage().pixelColor(8, 8);
    };
    QPixmap blue(16, 16);
    blue.fill(Qt::blue);
    model_.workspace.setIcon("safari", QIcon(blue));
    pane_->imageForAppName("Safari");
    pane_->imageForAppName("safari");
    EXPECT_EQ(
        model_.workspace.lookUps().value("Safari") + model_.workspace.lookUps().value("safari"), 1);
    model_.workspace.setRunningApplications({}); // what is known changes
    EXPECT_EQ(color("safari"), QColor(Qt::blue));
    EXPECT_EQ(color("SAFARI"), QColor(Qt::blue));
    EXPECT_EQ(pane_->imageForAppName("none").availableSizes().first(), QSize(16, 16));
}
