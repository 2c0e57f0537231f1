#include "app/ApplicationWindows.h"

#include "app/SupportInformation.h"
#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "framework/logviewer/QNLogTableViewer.h"
#include "framework/preferences/QNPreferencesWindowController.h"
#include "look/window/MVCustomWindow.h"
#include "model/AppVolumeController.h"
#include "model/MVIgnoredApps.h"
#include "platform/base/ExceptionReport.h"
#include "platform/bundle/Bundle.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "platform/window/Alert.h"
#include "ui/VolumeMenu.h"
#include "ui/VolumeWindow.h"
#include "ui/preferences/MVPrefsGeneral.h"
#include "ui/preferences/MVPrefsIgnored.h"
#include "workspace/Workspace.h"

#include <QDesktopServices>
#include <QUrl>

namespace {

QUrl recommendationPage() {
    return QUrl(QString::fromStdString(platform::Bundle::main().text("ReferURL")));
}

} // namespace

ApplicationWindows::ApplicationWindows(VolumeWindow& window, AppVolumeController& controller,
                                       MenuBarHelper* helper, const QString& logFile)
    : window_(window), controller_(controller), helper_(helper), about_(window) {
    about_.setShows64BitMark(QNApplication::current()->sixtyFourBitSystem());
    VolumeMenu& menu = window.menu();
    menu.setCanRecommend(recommendationPage().isValid());
    QObject::connect(&menu, &VolumeMenu::ignoredWanted, &window, [this] { showIgnoredPrograms(); });
    QObject::connect(&menu, &VolumeMenu::supportWanted, &window,
                     [&window, logFile] { SupportInformation::show(window, logFile); });
}

ApplicationWindows::~ApplicationWindows() = default;

void ApplicationWindows::makePreferences() {
    preferences_ = std::make_unique<QNPreferencesWindowController>(QStringLiteral("Prefs"));
    preferences_->window().setWindowIcon(window_.windowIcon());
    preferences_->addController(
        QNPreferencesItemViewController::controller<MVPrefsGeneral>(MVPrefsGeneral::Dependencies{
            platform::UserDefaults::standard(), controller_.rememberedApps(), helper_}));
    ignoredPane_ = QNPreferencesItemViewController::controller<MVPrefsIgnored>(
        MVPrefsIgnored::Dependencies{MVIgnoredApps::sharedInstance(), Workspace::shared(), [this] {
                                         return knownPrograms(controller_, Workspace::shared());
                                     }});
    preferences_->addController(ignoredPane_);
}

void ApplicationWindows::showPreferences() {
    if (preferences_ == nullptr)
        makePreferences();
    preferences_->showWindow();
}

void ApplicationWindows::showIgnoredPrograms() {
    if (preferences_ == nullptr)
        makePreferences();
    preferences_->selectController(ignoredPane_);
    preferences_->showWindow();
}

void ApplicationWindows::showLog(qnlog_handle* handle) {
    if (log_ == nullptr) {
        log_ = QNLogTableViewer::logViewerWithHandle(handle);
        log_->window()->setWindowIcon(window_.windowIcon());
    }
    log_->showWindow();
}

void ApplicationWindows::recommend() {
    platform::guarded(kExceptionInRecommendation, [] {
        const QUrl page = recommendationPage();
        if (QDesktopServices::openUrl(page))
            return;
        QNLog(qnlog_warning, "Couldn't open %@", page.toString());
        platform::Alert{
            .kind = platform::Alert::Kind::warning,
            .title = Texts::tr("The page can't be opened"),
            .message = platform::formatted(
                Texts::tr("This desktop has no browser for it. The page is\n%@"), page.toString()),
            .defaultButton = Texts::tr("OK")}
            .run();
    });
}
